# What Debian wants in a package besides what is installed, put in before it is closed.
file(GLOB programs ${CPACK_TEMPORARY_DIRECTORY}/*/usr/bin/quorvane ${CPACK_TEMPORARY_DIRECTORY}/usr/bin/quorvane)
list(GET programs 0 program)
get_filename_component(usr ${program}/../.. ABSOLUTE)

file(GLOB pages ${usr}/share/man/man1/*.1)
execute_process(COMMAND gzip -9nf ${pages} COMMAND_ERROR_IS_FATAL ANY)

set(documents ${usr}/share/doc/quorvane)
file(READ ${CPACK_QUORVANE_SOURCE}/NOTICE notice)
file(WRITE ${documents}/copyright "${notice}
On Debian systems the Apache License, Version 2.0, is in /usr/share/common-licenses/Apache-2.0.
")
# The terms of what is compiled in.
foreach(library libcli11-dev nlohmann-json3-dev)
    file(READ /usr/share/doc/${library}/copyright terms)
    file(APPEND ${documents}/copyright "\n\n${library}\n\n${terms}")
endforeach()
file(COPY ${CPACK_QUORVANE_SOURCE}/CHANGELOG.md DESTINATION ${documents})
file(RENAME ${documents}/CHANGELOG.md ${documents}/changelog)
string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
file(WRITE ${documents}/changelog.Debian "quorvane (${CPACK_QUORVANE_VERSION}) unstable; urgency=medium

  * changelog.gz says what has changed.

 -- ${CPACK_PACKAGE_CONTACT}  ${date}
")
execute_process(COMMAND gzip -9nf ${documents}/changelog ${documents}/changelog.Debian COMMAND_ERROR_IS_FATAL ANY)

# Debian keeps liblog outside the loader's path.
file(WRITE ${usr}/share/lintian/overrides/quorvane "quorvane: custom-library-search-path\n")
file(CHMOD ${documents}/copyright ${documents}/changelog.gz ${documents}/changelog.Debian.gz
    ${usr}/share/lintian/overrides/quorvane
    PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
