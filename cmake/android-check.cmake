# Compiles for a device without the NDK, to see that it would: Debian's Clang with Android as its target, libc++, and
# headers that stand in for the NDK's. Static libraries only, as there is nothing to link with. A real build takes the
# NDK's own android.toolchain.cmake.
#   ANDROID_ABI              arm64-v8a, armeabi-v7a, x86_64 or x86
#   QUORVANE_NDK_INCLUDE     a folder with the headers that scripts/ndk-check puts together
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES ANDROID_ABI QUORVANE_NDK_INCLUDE)
set(CMAKE_SYSTEM_NAME Android)
# Tells CMake that this file knows the tools: it does not look for an NDK then.
set(CMAKE_SYSTEM_VERSION 1)

# The processor and the target as the NDK names them, and the C library whose headers stand in.
set(arm64-v8a aarch64 aarch64-linux-android24 aarch64-linux-gnu)
set(armeabi-v7a armv7-a armv7a-linux-androideabi24 arm-linux-gnueabi)
set(x86_64 x86_64 x86_64-linux-android24 x86_64-linux-gnu)
set(x86 i686 i686-linux-android24 i686-linux-gnu)
list(GET ${ANDROID_ABI} 0 CMAKE_SYSTEM_PROCESSOR)
list(GET ${ANDROID_ABI} 1 CMAKE_CXX_COMPILER_TARGET)
list(GET ${ANDROID_ABI} 2 libc)

set(CMAKE_CXX_COMPILER clang++)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
execute_process(COMMAND clang++ -print-resource-dir OUTPUT_VARIABLE clang OUTPUT_STRIP_TRAILING_WHITESPACE)
set(CMAKE_CXX_FLAGS_INIT -nostdlibinc)
foreach(folder IN ITEMS ${clang}/../../../include/c++/v1 ${QUORVANE_NDK_INCLUDE} /usr/${libc}/include)
    string(APPEND CMAKE_CXX_FLAGS_INIT " -isystem ${folder}")
endforeach()
