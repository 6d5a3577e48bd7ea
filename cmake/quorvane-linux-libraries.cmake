# The system's libraries, as targets: the build and the installed package find them alike.
foreach(library IN ITEMS gles:GLESv2 egl:EGL log:log)
    string(REPLACE ":" ";" library ${library})
    list(GET library 0 target)
    list(GET library 1 name)
    if(NOT TARGET quorvane_linux::${target})
        # Debian keeps liblog in a folder of its own.
        find_library(QUORVANE_${name}_LIBRARY ${name} PATH_SUFFIXES android REQUIRED)
        mark_as_advanced(QUORVANE_${name}_LIBRARY)
        add_library(quorvane_linux::${target} UNKNOWN IMPORTED GLOBAL)
        set_target_properties(quorvane_linux::${target} PROPERTIES
            IMPORTED_LOCATION ${QUORVANE_${name}_LIBRARY})
    endif()
endforeach()
