package android.hardware;

public final class Sensor {
    public static final int TYPE_ACCELEROMETER = 1;
    public static final int TYPE_GYROSCOPE = 4;
    public static final int TYPE_ROTATION_VECTOR = 11;
    public static final int TYPE_GAME_ROTATION_VECTOR = 15;

    public int getType() {
        return TYPE_GYROSCOPE;
    }
}
