package android.content.res;

/** What a layout, a style or a theme says of some attributes; null where none does. */
public class TypedArray {
    /** Of those that were not recycled. */
    public static int open;

    private final Object[] values;

    public TypedArray(Object[] values) {
        this.values = values;
        ++open;
    }

    public String getString(int index) {
        return (String) values[index];
    }

    public boolean getBoolean(int index, boolean otherwise) {
        return values[index] == null ? otherwise : (Boolean) values[index];
    }

    public float getFloat(int index, float otherwise) {
        return values[index] == null ? otherwise : (Float) values[index];
    }

    public int getInt(int index, int otherwise) {
        return values[index] == null ? otherwise : (Integer) values[index];
    }

    public void recycle() {
        --open;
    }
}
