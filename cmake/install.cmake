# What `cmake --install` puts where, and the Debian package that `cpack` makes of it.
include(GNUInstallDirs)

install(TARGETS scrubwell RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
# The module is opened by its path and never by the linker, so it lies in a folder of its own.
install(TARGETS scrubwell_package LIBRARY DESTINATION lib/scrubwell)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/icons/ DESTINATION ${CMAKE_INSTALL_DATADIR}/scrubwell/icons
  FILES_MATCHING PATTERN "*.svg")
install(FILES ${PROJECT_SOURCE_DIR}/packaging/scrubwell.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES ${PROJECT_SOURCE_DIR}/packaging/scrubwell.bash
  DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME scrubwell)
install(FILES README.md CHANGELOG.md LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY docs DESTINATION ${CMAKE_INSTALL_DOCDIR} FILES_MATCHING
  PATTERN "*.md" PATTERN "*.png")

set(SCRUBWELL_MAINTAINER "Scrubwell developers <scrubwell@example.org>" CACHE STRING
  "Who the package names as its maintainer")
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME scrubwell)
set(CPACK_PACKAGE_CONTACT "${SCRUBWELL_MAINTAINER}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "find stale entries in the registry of a switched-off Windows")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION "\
Scrubwell finds entries of a Windows registry that refer to files, keys and
programs which are no longer there. It looks at a switched-off Windows, XP to
11, mounted under Linux.

A scan changes nothing. A clean backs up whatever it removes, so that all of
it can be put back. Results come as text, JSON, CSV, HTML and SARIF, in
English and German.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE
  GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "ntfs-3g, dislocker, bash-completion")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# What Debian wants otherwise than an installation by hand.
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/packaging/debian.cmake)
include(CPack)
