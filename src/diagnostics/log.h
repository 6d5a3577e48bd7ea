#ifndef QUORVANE_DIAGNOSTICS_LOG_H
#define QUORVANE_DIAGNOSTICS_LOG_H

#include <android/log.h>

#define LOG_TAG "AppQRVN"

// Macros, so that the compiler checks each format against its arguments.
#define LOGD(...) __android_log_print(ANDROID_LOG_DEBUG, LOG_TAG, __VA_ARGS__)
#define LOGE(...) __android_log_print(ANDROID_LOG_ERROR, LOG_TAG, __VA_ARGS__)

#endif
