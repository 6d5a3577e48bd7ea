package android.hardware;

import android.os.Handler;

public abstract class SensorManager {
    public static final int SENSOR_DELAY_GAME = 1;

    public Sensor getDefaultSensor(int type) {
        throw new UnsupportedOperationException();
    }

    public boolean registerListener(SensorEventListener listener, Sensor sensor,
            int samplingPeriodUs, Handler handler) {
        throw new UnsupportedOperationException();
    }

    public void unregisterListener(SensorEventListener listener) {}
}
