// The look-up of a system property with a default, as libcutils has it: apps cannot link that library.

#include <cutils/properties.h>

#include <cstring>

int property_get(const char* key, char* value, const char* default_value) {
    const int length = __system_property_get(key, value);
    if (length > 0) return length;

    const size_t fallback = default_value != nullptr ? strnlen(default_value, PROPERTY_VALUE_MAX - 1) : 0;
    if (fallback > 0) std::memcpy(value, default_value, fallback);
    value[fallback] = '\0';
    return static_cast<int>(fallback);
}
