package android.hardware;

public class SensorEvent {
    private static long now;

    public final float[] values;
    public Sensor sensor = new Sensor();
    public long timestamp = now += 5_000_000;

    SensorEvent(float x, float y) {
        values = new float[] {x, y, 0f};
    }
}
