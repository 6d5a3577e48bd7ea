package android.util;

public interface AttributeSet {
    String getAttributeValue(String namespace, String name);

    int getAttributeResourceValue(String namespace, String attribute, int defaultValue);

    boolean getAttributeBooleanValue(String namespace, String attribute, boolean defaultValue);

    float getAttributeFloatValue(String namespace, String attribute, float defaultValue);

    int getAttributeIntValue(String namespace, String attribute, int defaultValue);
}
