#ifndef QUORVANE_PLATFORM_LINUX_SYS_SYSTEM_PROPERTIES_H
#define QUORVANE_PLATFORM_LINUX_SYS_SYSTEM_PROPERTIES_H

// What <cutils/properties.h> needs from Android's C library.
#define PROP_NAME_MAX 32
#define PROP_VALUE_MAX 92

#endif
