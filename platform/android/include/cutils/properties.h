#ifndef QUORVANE_PLATFORM_ANDROID_CUTILS_PROPERTIES_H
#define QUORVANE_PLATFORM_ANDROID_CUTILS_PROPERTIES_H

// What the component uses of the header of this name, which belongs to Android's own sources and is not in
// the NDK.

#include <sys/system_properties.h>

#define PROPERTY_KEY_MAX PROP_NAME_MAX
#define PROPERTY_VALUE_MAX PROP_VALUE_MAX

#ifdef __cplusplus
extern "C" {
#endif

/// Copies the value of `key`, or `default_value` (null for none) when unset or empty, into `value`
/// (PROPERTY_VALUE_MAX bytes, zero-ended). Returns its length in bytes, at most 91. Any thread.
int property_get(const char* key, char* value, const char* default_value);

#ifdef __cplusplus
}
#endif

#endif
