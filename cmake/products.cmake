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

if(NOT WIN32 AND EXISTS ${CMAKE_SOURCE_DIR}/src/hosts/cli/main.cpp)
  add_executable(scrubwell ${CMAKE_SOURCE_DIR}/src/hosts/cli/main.cpp)
  target_link_libraries(scrubwell PRIVATE scrubwell_hosts_cli)
endif()

if(WIN32)
  return()
endif()
include(${CMAKE_SOURCE_DIR}/cmake/install.cmake)

# The example host, and the tests of what is delivered: that the documents show what the programs
# do, and that the manual and the completion know what the program knows.
if(SCRUBWELL_TESTS)
  enable_testing()
  add_subdirectory(${CMAKE_SOURCE_DIR}/examples)
  find_program(PYTHON3 python3 REQUIRED)
  find_program(BASH bash REQUIRED)
  set(tests ${CMAKE_SOURCE_DIR}/tests)
  add_test(NAME example COMMAND ${PYTHON3} ${tests}/examples/embed_test.py
    $<TARGET_FILE:embed> $<TARGET_FILE:scrubwell_package> ${CMAKE_SOURCE_DIR})
  add_test(NAME documents COMMAND ${PYTHON3} ${tests}/docs/docs_test.py
    $<TARGET_FILE:scrubwell> $<TARGET_FILE:mksample> ${CMAKE_SOURCE_DIR}
    README.md docs/user-guide.md)
  add_test(NAME manual_and_completion COMMAND ${PYTHON3} ${tests}/packaging/options_test.py
    $<TARGET_FILE:scrubwell> ${CMAKE_SOURCE_DIR})
  add_test(NAME completion COMMAND ${BASH} ${tests}/packaging/completion_test.sh
    $<TARGET_FILE:scrubwell> ${CMAKE_SOURCE_DIR})
  add_test(NAME install COMMAND sh ${tests}/packaging/install_test.sh
    ${CMAKE_COMMAND} ${CMAKE_BINARY_DIR} $<TARGET_FILE:embed> ${CMAKE_SOURCE_DIR})
  set_tests_properties(example documents manual_and_completion completion install
    PROPERTIES TIMEOUT 300)
endif()
