# What Debian wants in a package besides what is installed, put in before it is closed.
file(READ ${CPACK_QUORVANE_SOURCE}/NOTICE notice)
string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)

# Completes the package NAME, which has the program of that name; the other libraries are compiled into it.
function(complete NAME)
    file(GLOB program ${CPACK_TEMPORARY_DIRECTORY}/*/usr/bin/${NAME})
    if(NOT program)
        message(FATAL_ERROR "${NAME} is not installed")
    endif()
    get_filename_component(usr ${program}/../.. ABSOLUTE)

    file(GLOB pages ${usr}/share/man/man1/*.1)
    execute_process(COMMAND gzip -9nf ${pages} COMMAND_ERROR_IS_FATAL ANY)

    set(documents ${usr}/share/doc/${NAME})
    file(WRITE ${documents}/copyright "${notice}
On Debian systems the Apache License, Version 2.0, is in /usr/share/common-licenses/Apache-2.0.
")
    foreach(library ${ARGN})
        file(READ /usr/share/doc/${library}/copyright terms)
        file(APPEND ${documents}/copyright "\n\n${library}\n\n${terms}")
    endforeach()
    file(COPY ${CPACK_QUORVANE_SOURCE}/CHANGELOG.md DESTINATION ${documents})
    file(RENAME ${documents}/CHANGELOG.md ${documents}/changelog)
    file(WRITE ${documents}/changelog.Debian "${NAME} (${CPACK_QUORVANE_VERSION}) unstable; urgency=medium

  * changelog.gz says what has changed.

 -- ${CPACK_PACKAGE_CONTACT}  ${date}
")
    execute_process(COMMAND gzip -9nf ${documents}/changelog ${documents}/changelog.Debian COMMAND_ERROR_IS_FATAL ANY)

    # Debian keeps liblog outside the loader's path.
    file(WRITE ${usr}/share/lintian/overrides/${NAME} "${NAME}: custom-library-search-path\n")
    file(CHMOD ${documents}/copyright ${documents}/changelog.gz ${documents}/changelog.Debian.gz
        ${usr}/share/lintian/overrides/${NAME}
        PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
endfunction()

complete(quorvane libcli11-dev nlohmann-json3-dev)
complete(quorvane-tuner libcli11-dev nlohmann-json3-dev libimgui-dev)
