# The Debian package: everything that `cmake --install` puts in place, built
# with CMAKE_INSTALL_PREFIX=/usr (scripts/package.sh does so).
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME qz32)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "qz_32 maintainers <qz32@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Counter terminal library with its tools and simulator")
set(CPACK_PACKAGE_DESCRIPTION "libqz_32 drives the multi-function counter terminal over USB HID or a serial port.
This package holds the library and its header, the font and photo components,
qzctl, the terminal simulator qzsim with its scenarios, and a udev rule that gives
the terminal to the group qz32.")
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
# The font component opens this font by its path; qzsim mounts its HID node with FUSE.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "fonts-wqy-zenhei")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "fuse3")
# ldconfig runs after the library comes or goes.
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_LIST_DIR}/deb/postinst ${CMAKE_CURRENT_LIST_DIR}/deb/postrm
  ${CMAKE_CURRENT_LIST_DIR}/deb/triggers)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
include(CPack)
