# The Debian packages of the program and of the window, which scripts/deb makes: cpack -G DEB.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME quorvane)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_VENDOR Quorvane)
set(CPACK_PACKAGE_CONTACT "Quorvane <packages@quorvane.invalid>" CACHE STRING "Name and address of who makes the package")
set(CPACK_DEBIAN_PROGRAM_DESCRIPTION
"makes a photo move in depth
Turns a photo and its depth map into a picture that swings with the view: a
looping clip, a still, or a page to share. It finds the depth inside phones'
portrait photos, makes it of two views, or takes a depth map. It draws with
OpenGL ES where there is a driver, and on the processor elsewhere.")
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)

# The programs, and no headers or static libraries.
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL program tuner)
set(CPACK_DEBIAN_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_NAME quorvane)
set(CPACK_DEBIAN_TUNER_PACKAGE_NAME quorvane-tuner)
set(CPACK_DEBIAN_TUNER_DESCRIPTION
"shows a photo in depth while its settings are changed
A window in which a photo moves with the pointer. It compares two settings,
records the hand, and exports profiles for the program quorvane and for apps.")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
# A driver and the sheets' font are loaded where they are there; clips need ffmpeg.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_DEPENDS ffmpeg)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_RECOMMENDS "libegl1, libgles2, fonts-dejavu-core")
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SUGGESTS nodejs)
# The window has the program make its clips.
set(CPACK_DEBIAN_TUNER_PACKAGE_DEPENDS "quorvane (= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")
set(CPACK_DEBIAN_TUNER_PACKAGE_RECOMMENDS "libgl1-mesa-dri, fonts-dejavu-core")
set(CPACK_DEBIAN_TUNER_PACKAGE_SUGGESTS adb)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/deb_files.cmake)
set(CPACK_PROJECT_CONFIG_FILE ${PROJECT_BINARY_DIR}/deb_paths.cmake)
file(WRITE ${PROJECT_BINARY_DIR}/deb_paths.cmake
    "set(CPACK_QUORVANE_SOURCE \"${PROJECT_SOURCE_DIR}\")\n"
    "set(CPACK_QUORVANE_VERSION \"${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}\")\n")
include(CPack)
