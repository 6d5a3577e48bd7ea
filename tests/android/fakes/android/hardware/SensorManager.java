package android.hardware;

import android.os.Handler;

/** Of a phone without a sensor: the picture moves by itself. */
public class SensorManager {
    public static final int SENSOR_DELAY_GAME = 1;

    public Sensor getDefaultSensor(int type) {
        return null;
    }

    public boolean registerListener(SensorEventListener listener, Sensor sensor,
            int samplingPeriodUs, Handler handler) {
        return false;
    }

    public void unregisterListener(SensorEventListener listener) {}
}
