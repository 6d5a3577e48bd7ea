package org.json;

import java.util.Iterator;

public class JSONObject {
    public JSONObject() {}

    public JSONObject(String json) throws JSONException {}

    public Object get(String name) throws JSONException {
        throw new UnsupportedOperationException();
    }

    public double getDouble(String name) throws JSONException {
        throw new UnsupportedOperationException();
    }

    public int optInt(String name) {
        throw new UnsupportedOperationException();
    }

    public String optString(String name, String fallback) {
        throw new UnsupportedOperationException();
    }

    public JSONObject optJSONObject(String name) {
        throw new UnsupportedOperationException();
    }

    public Iterator<String> keys() {
        throw new UnsupportedOperationException();
    }
}
