# 64-bit Arm on another processor: Debian's cross compiler, or Clang with -DCMAKE_CXX_COMPILER=clang++. What they build
# runs in qemu-aarch64.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
if(NOT CMAKE_CXX_COMPILER)
    set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
endif()
# Clang needs telling.
set(CMAKE_CXX_COMPILER_TARGET aarch64-linux-gnu)
