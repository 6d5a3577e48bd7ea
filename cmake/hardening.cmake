# What a mistake in the reading of somebody's file meets in a released program or library: overruns of buffers on the
# stack and in functions of the C library end the process, and the tables through which functions are called cannot be
# written. Programs that load anywhere (PIE) the compilers of Debian and of the NDK make by themselves.
set(released "$<NOT:$<CONFIG:Debug>>")
add_compile_options(
    $<${released}:-fstack-protector-strong> $<${released}:-U_FORTIFY_SOURCE> $<${released}:-D_FORTIFY_SOURCE=2>)
add_link_options(LINKER:-z,relro LINKER:-z,now)
