# `cpack` in the build folder makes vantor_VERSION_ARCHITECTURE.deb.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME vantor)
set(CPACK_PACKAGE_VENDOR "VantorLockScreen developers")
set(CPACK_PACKAGE_CONTACT "VantorLockScreen developers <vantor@localhost>")
set(CPACK_STRIP_FILES ON)
# Units and entries name the place where the programs will be, not where they are packed.
set(CPACK_SET_DESTDIR ON)
set(CPACK_INSTALL_PREFIX /usr)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION x11)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION "animated wallpapers drawn on the GPU
Shader programs draw the wallpapers of the lock screen, the desktop and the
screen saver, live and on every display. The agent shows them behind the
windows of a Wayland or X11 desktop, or in windows of their own, and
vantorctl chooses, draws and tries them.")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Any Vulkan driver does, Mesa's software rasteriser among them; without a session bus the agent runs
# but is not told of changes.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS
    "mesa-vulkan-drivers | vulkan-icd, default-dbus-session-bus | dbus-session-bus")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(debian_version ${PROJECT_VERSION})
configure_file(changelog.in ${CMAKE_CURRENT_BINARY_DIR}/changelog @ONLY)
set(CPACK_VANTOR_DOCUMENTS
    ${CMAKE_CURRENT_BINARY_DIR}/changelog ${CMAKE_CURRENT_SOURCE_DIR}/copyright)
set(CPACK_VANTOR_OVERRIDES ${CMAKE_CURRENT_SOURCE_DIR}/lintian-overrides)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_SOURCE_DIR}/debian_layout.cmake)

include(CPack)
