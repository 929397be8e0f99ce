# What is delivered: the package as a loadable module, and the program.

# Only the entry points are exported. Everything else, the C++ runtime's shared template statics
# included, stays the module's own, so that a host with a copy of the same code does not share its
# state by accident.
add_library(scrubwell_package MODULE ${CMAKE_SOURCE_DIR}/src/plugins/module/module.cpp)
set_target_properties(scrubwell_package PROPERTIES PREFIX "")
target_link_libraries(scrubwell_package PRIVATE scrubwell_plugins)
if(WIN32)
  target_sources(scrubwell_package PRIVATE ${CMAKE_SOURCE_DIR}/cmake/module.def)
else()
  set_target_properties(scrubwell_package PROPERTIES
    LINK_DEPENDS ${CMAKE_SOURCE_DIR}/cmake/module.map)
  target_link_options(scrubwell_package PRIVATE
    -Wl,--version-script=${CMAKE_SOURCE_DIR}/cmake/module.map)
endif()

add_executable(scrubwell ${CMAKE_SOURCE_DIR}/src/hosts/cli/main.cpp)
target_link_libraries(scrubwell PRIVATE scrubwell_hosts_cli)
if(WIN32)
  # What it is, and how the system is to treat it.
  enable_language(RC)
  set(resources ${CMAKE_BINARY_DIR}/generated/scrubwell.rc)
  configure_file(${CMAKE_SOURCE_DIR}/cmake/windows/scrubwell.rc.in ${resources} @ONLY)
  target_sources(scrubwell PRIVATE ${resources})
  set_source_files_properties(${resources} PROPERTIES
    OBJECT_DEPENDS ${CMAKE_SOURCE_DIR}/cmake/windows/scrubwell.manifest)
  include(${CMAKE_SOURCE_DIR}/cmake/install_windows.cmake)
else()
  include(${CMAKE_SOURCE_DIR}/cmake/install.cmake)
endif()

if(NOT SCRUBWELL_TESTS)
  return()
endif()

# The example host, and the tests of what is delivered: that the documents show what the programs
# do, and that the manual and the completion know what the program knows.
enable_testing()
add_subdirectory(${CMAKE_SOURCE_DIR}/examples)
find_program(PYTHON3 python3 REQUIRED)
set(tests ${CMAKE_SOURCE_DIR}/tests)
# Under Wine the module lies beside the program, and on no drive.
add_test(NAME example COMMAND ${PYTHON3} ${tests}/examples/embed_test.py
  $<IF:$<BOOL:${WIN32}>,$<TARGET_FILE_NAME:scrubwell_package>,$<TARGET_FILE:scrubwell_package>>
  ${CMAKE_SOURCE_DIR}
  ${CMAKE_CROSSCOMPILING_EMULATOR} $<TARGET_FILE:embed>)
set_tests_properties(example PROPERTIES TIMEOUT 300)
if(WIN32)
  add_test(NAME archive COMMAND ${PYTHON3} ${tests}/packaging/zip_test.py
    ${CMAKE_CPACK_COMMAND} ${CMAKE_BINARY_DIR} ${CMAKE_CXX_COMPILER})
  set_tests_properties(archive PROPERTIES TIMEOUT 300)
  return()
endif()
find_program(BASH bash REQUIRED)
add_test(NAME documents COMMAND ${PYTHON3} ${tests}/docs/docs_test.py
  $<TARGET_FILE:scrubwell> $<TARGET_FILE:mksample> ${CMAKE_SOURCE_DIR}
  README.md docs/user-guide.md)
add_test(NAME manual_and_completion COMMAND ${PYTHON3} ${tests}/packaging/options_test.py
  $<TARGET_FILE:scrubwell> ${CMAKE_SOURCE_DIR})
add_test(NAME completion COMMAND ${BASH} ${tests}/packaging/completion_test.sh
  $<TARGET_FILE:scrubwell> ${CMAKE_SOURCE_DIR})
add_test(NAME install COMMAND sh ${tests}/packaging/install_test.sh
  ${CMAKE_COMMAND} ${CMAKE_BINARY_DIR} $<TARGET_FILE:embed> ${CMAKE_SOURCE_DIR})
set_tests_properties(documents manual_and_completion completion install PROPERTIES TIMEOUT 300)
