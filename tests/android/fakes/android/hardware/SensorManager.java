package android.hardware;

import android.os.Handler;
import java.util.concurrent.atomic.AtomicInteger;

/** Of a phone with a gyroscope, or without any sensor: then the picture moves by itself. */
public class SensorManager {
    public static final int SENSOR_DELAY_GAME = 1;
    /** How many listeners there are. */
    public static final AtomicInteger LISTENERS = new AtomicInteger();
    public static volatile boolean present;

    private static volatile SensorEventListener listener;
    private static volatile Handler handler;

    /** The phone turns at these speeds from now on; a sample each 5 ms. */
    public static void turn(float x, float y, int samples) {
        for (int i = 0; i < samples; ++i) {
            SensorEvent event = new SensorEvent(x, y);
            SensorEventListener told = listener;
            if (told != null) {
                handler.post(() -> told.onSensorChanged(event));
            }
        }
    }

    public Sensor getDefaultSensor(int type) {
        return present && type == Sensor.TYPE_GYROSCOPE ? new Sensor() : null;
    }

    public boolean registerListener(SensorEventListener newListener, Sensor sensor,
            int samplingPeriodUs, Handler newHandler) {
        listener = newListener;
        handler = newHandler;
        LISTENERS.incrementAndGet();
        return true;
    }

    public void unregisterListener(SensorEventListener gone) {
        if (listener == gone) {
            listener = null;
            LISTENERS.decrementAndGet();
        }
    }
}
