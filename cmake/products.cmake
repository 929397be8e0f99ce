# What is delivered: the package as a loadable module, and the program.

# Only the entry points are exported. Everything else, the C++ runtime's shared template statics
# included, stays the module's own, so that a host with a copy of the same code does not share its
# state by accident.
add_library(scrubwell_package MODULE ${CMAKE_SOURCE_DIR}/src/plugins/module/module.cpp)
set_target_properties(scrubwell_package PROPERTIES
  PREFIX "" LINK_DEPENDS ${CMAKE_SOURCE_DIR}/cmake/module.map)
target_link_libraries(scrubwell_package PRIVATE scrubwell_plugins)
target_link_options(scrubwell_package PRIVATE
  -Wl,--version-script=${CMAKE_SOURCE_DIR}/cmake/module.map)

if(EXISTS ${CMAKE_SOURCE_DIR}/src/hosts/cli/main.cpp)
  add_executable(scrubwell ${CMAKE_SOURCE_DIR}/src/hosts/cli/main.cpp)
  target_link_libraries(scrubwell PRIVATE scrubwell_hosts_cli)
endif()
