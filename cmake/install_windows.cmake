# The folder that `cpack` makes a zip of: the program and the module at its top, since each finds
# all it needs in itself.
install(TARGETS scrubwell RUNTIME DESTINATION .)
install(TARGETS scrubwell_package LIBRARY DESTINATION .)
install(FILES README.md CHANGELOG.md LICENSE DESTINATION .)
install(DIRECTORY docs DESTINATION . FILES_MATCHING PATTERN "*.md" PATTERN "*.png"
  PATTERN "*.svg")

set(CPACK_GENERATOR ZIP)
set(CPACK_PACKAGE_NAME scrubwell)
set(CPACK_PACKAGE_FILE_NAME
  scrubwell-${PROJECT_VERSION}-windows-${CMAKE_SYSTEM_PROCESSOR})
set(CPACK_STRIP_FILES ON)
include(CPack)
