# The module is opened as a host opens it.
add_dependencies(test_plugins scrubwell_package)
target_compile_definitions(test_plugins PRIVATE
  SCRUBWELL_MODULE="$<TARGET_FILE:scrubwell_package>")
target_link_libraries(test_plugins PRIVATE ${CMAKE_DL_LIBS})
