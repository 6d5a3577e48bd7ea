#ifndef CUTILS_PROPERTIES_H
#define CUTILS_PROPERTIES_H

#define PROPERTY_VALUE_MAX 92

#ifdef __cplusplus
extern "C" {
#endif

/// A page has no properties: copies `fallback`, or nothing where it is null, into the PROPERTY_VALUE_MAX
/// bytes of `value`. Returns the text's length.
int property_get(const char* key, char* value, const char* fallback);

#ifdef __cplusplus
}
#endif

#endif
