package quorvane.parallax;

import android.content.Context;
import android.hardware.Sensor;
import android.hardware.SensorEvent;
import android.hardware.SensorEventListener;
import android.hardware.SensorManager;
import android.os.Handler;

/** Feeds a tracker from the best sensor that the phone has; without any it moves by itself. */
final class MotionSensor implements SensorEventListener {
    // The game rotation vector does without the compass, which a speaker nearby disturbs.
    private static final int[] BEST_FIRST = {
        Sensor.TYPE_GAME_ROTATION_VECTOR, Sensor.TYPE_ROTATION_VECTOR, Sensor.TYPE_GYROSCOPE,
        Sensor.TYPE_ACCELEROMETER};

    private final SensorManager manager;
    private final TiltTracker tracker;
    private final Runnable onSample;

    /** {@code onSample} runs after each sample, on the thread where these come. */
    MotionSensor(Context context, TiltTracker tracker, Runnable onSample) {
        manager = (SensorManager) context.getSystemService(Context.SENSOR_SERVICE);
        this.tracker = tracker;
        this.onSample = onSample;
    }

    /** Samples come on the handler's thread from now on. */
    void start(Handler handler) {
        tracker.setIdle(!register(handler));
    }

    void stop() {
        manager.unregisterListener(this);
    }

    @Override
    public void onSensorChanged(SensorEvent event) {
        switch (event.sensor.getType()) {
            case Sensor.TYPE_GYROSCOPE:
                tracker.gyroscope(event.timestamp, event.values);
                break;
            case Sensor.TYPE_ACCELEROMETER:
                tracker.accelerometer(event.timestamp, event.values);
                break;
            default:
                tracker.rotationVector(event.timestamp, event.values);
                break;
        }
        onSample.run();
    }

    @Override
    public void onAccuracyChanged(Sensor sensor, int accuracy) {}

    private boolean register(Handler handler) {
        for (int type : BEST_FIRST) {
            Sensor sensor = manager.getDefaultSensor(type);
            if (sensor != null && manager.registerListener(
                    this, sensor, SensorManager.SENSOR_DELAY_GAME, handler)) {
                return true;
            }
        }
        return false;
    }
}
