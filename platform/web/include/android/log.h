#ifndef ANDROID_LOG_H
#define ANDROID_LOG_H

// What the component uses of Android's log.

typedef enum android_LogPriority {
    ANDROID_LOG_DEBUG = 3,
    ANDROID_LOG_INFO,
    ANDROID_LOG_WARN,
    ANDROID_LOG_ERROR
} android_LogPriority;

#ifdef __cplusplus
extern "C" {
#endif

/// Warnings and errors go to the page's console, the rest nowhere.
int __android_log_print(int priority, const char* tag, const char* format, ...)
    __attribute__((format(printf, 3, 4)));

#ifdef __cplusplus
}
#endif

#endif
