# One test program a box: tests/DIR/*.cpp links the box it mirrors. What tests share lies in
# tests/support.
file(GLOB support_sources CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/tests/support/*.cpp)
if(WIN32)
  # Cross-compiled with the programs. What makes disks on the building machine stays there.
  set(BUILD_GMOCK OFF)
  set(INSTALL_GTEST OFF)
  add_subdirectory(/usr/src/googletest googletest EXCLUDE_FROM_ALL)
  list(FILTER support_sources EXCLUDE REGEX "/disk\\.cpp$")
else()
  find_package(GTest REQUIRED)
endif()
include(GoogleTest)

if(support_sources)
  add_library(scrubwell_test_support STATIC ${support_sources})
  set(scope PUBLIC)
else()
  add_library(scrubwell_test_support INTERFACE)
  set(scope INTERFACE)
endif()
target_include_directories(scrubwell_test_support ${scope} ${CMAKE_SOURCE_DIR}/tests)
target_compile_definitions(scrubwell_test_support ${scope}
  SCRUBWELL_SOURCE_DIR="${CMAKE_SOURCE_DIR}")
target_link_libraries(scrubwell_test_support ${scope}
  scrubwell_options scrubwell_framework scrubwell_backends_memory GTest::gtest)

function(scrubwell_tests dir)
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/tests/${dir}/*.cpp)
  if(NOT sources)
    return()
  endif()
  string(REPLACE "/" "_" name ${dir})
  add_executable(test_${name} ${sources})
  target_link_libraries(test_${name} PRIVATE scrubwell_test_support GTest::gtest_main)
  if(TARGET scrubwell_${name})
    target_link_libraries(test_${name} PRIVATE scrubwell_${name})
  endif()
  foreach(extra ${ARGN})
    string(REPLACE "/" "_" extra ${extra})
    target_link_libraries(test_${name} PRIVATE scrubwell_${extra})
  endforeach()
  if(EXISTS ${CMAKE_SOURCE_DIR}/tests/${dir}/libraries.cmake)
    include(${CMAKE_SOURCE_DIR}/tests/${dir}/libraries.cmake)
  endif()
  add_test(NAME ${name} COMMAND test_${name})
  set_tests_properties(${name} PROPERTIES TIMEOUT 600)
endfunction()

if(WIN32)
  # What depends on the width of the numbers, and what only Windows has.
  scrubwell_tests(registry)
  scrubwell_tests(backends/windows backends/memory hosts/driver)

  # The program itself in a Windows of its own, furnished by a helper that links nothing of it but
  # headers. What is read offline there is read by the programs for the building machine.
  set(SCRUBWELL_OFFLINE_BUILD ${CMAKE_SOURCE_DIR}/out/test CACHE PATH
    "Where the programs for the building machine lie")
  add_executable(plant ${CMAKE_SOURCE_DIR}/tests/hosts/live/plant.cpp)
  target_link_libraries(plant PRIVATE scrubwell_options ole32 oleaut32 uuid wininet)
  add_test(NAME live_program COMMAND ${PYTHON3} ${CMAKE_SOURCE_DIR}/tests/hosts/live/program_test.py
    $<TARGET_FILE:scrubwell> $<TARGET_FILE:plant> ${CMAKE_SOURCE_DIR} ${SCRUBWELL_OFFLINE_BUILD})
  set_tests_properties(live_program PROPERTIES TIMEOUT 600)
  return()
endif()

scrubwell_tests(registry)
scrubwell_tests(framework)
foreach(family com filetypes history startup software system)
  scrubwell_tests(plugins/${family})
endforeach()
scrubwell_tests(plugins)
foreach(format ${format_boxes})
  scrubwell_tests(${format})
endforeach()
scrubwell_tests(backends/common)
scrubwell_tests(backends/memory)
scrubwell_tests(backends/contract backends/memory backends/offline)
scrubwell_tests(backends/offline)
scrubwell_tests(hosts/driver backends/memory)
scrubwell_tests(hosts/report)
scrubwell_tests(hosts/cli)
scrubwell_tests(whole hosts/driver backends/offline formats/lnk formats/regf)

add_test(NAME include_directions
  COMMAND ${CMAKE_COMMAND} -DSOURCE_DIR=${CMAKE_SOURCE_DIR}
          -P ${CMAKE_SOURCE_DIR}/cmake/check_includes.cmake)
