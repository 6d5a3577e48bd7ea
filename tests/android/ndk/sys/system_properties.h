#ifndef QUORVANE_TESTS_NDK_SYS_SYSTEM_PROPERTIES_H
#define QUORVANE_TESTS_NDK_SYS_SYSTEM_PROPERTIES_H

/* What our code uses of the header of this name in Android's C library, as it is declared there. */

#define PROP_NAME_MAX 32
#define PROP_VALUE_MAX 92

#ifdef __cplusplus
extern "C" {
#endif

int __system_property_get(const char* name, char* value);

#ifdef __cplusplus
}
#endif

#endif
