# The folder that `cpack` makes a zip of: the program and the module at its top, since each finds
# all it needs in itself.
install(TARGETS scrubwell RUNTIME DESTINATION .)
install(TARGETS scrubwell_package LIBRARY DESTINATION .)
install(FILES README.md CHANGELOG.md LICENSE DESTINATION .)
install(DIRECTORY docs DESTINATION . FILES_MATCHING PATTERN "*.md" PATTERN "*.png"
  PATTERN "*.svg")

# For programs that load the module: what its interface is made of, and a host to begin with.
install(DIRECTORY src/registry src/framework DESTINATION include FILES_MATCHING PATTERN "*.h")
foreach(header plugins/module/interface.h plugins/system/Browserhelperobjects.h texts/text.h)
  get_filename_component(folder ${header} DIRECTORY)
  install(FILES src/${header} DESTINATION include/${folder})
endforeach()
install(DIRECTORY examples/embed DESTINATION examples)

set(CPACK_GENERATOR ZIP)
set(CPACK_PACKAGE_NAME scrubwell)
set(CPACK_PACKAGE_FILE_NAME
  scrubwell-${PROJECT_VERSION}-windows-${CMAKE_SYSTEM_PROCESSOR})
set(CPACK_STRIP_FILES ON)
include(CPack)
