package android.hardware;

public class SensorEvent {
    public final float[] values = new float[0];
    public Sensor sensor;
    public long timestamp;
}
