package android.content.res;

public class TypedArray {
    TypedArray() {}

    public String getString(int index) {
        throw new UnsupportedOperationException();
    }

    public boolean getBoolean(int index, boolean otherwise) {
        throw new UnsupportedOperationException();
    }

    public float getFloat(int index, float otherwise) {
        throw new UnsupportedOperationException();
    }

    public int getInt(int index, int otherwise) {
        throw new UnsupportedOperationException();
    }

    public void recycle() {}
}
