# These tests run the program itself on an installation made of the sample.
find_package(nlohmann_json REQUIRED)
target_link_libraries(test_hosts_cli PRIVATE nlohmann_json::nlohmann_json)
target_compile_definitions(test_hosts_cli PRIVATE
  SCRUBWELL_PROGRAM="$<TARGET_FILE:scrubwell>" SCRUBWELL_MKSAMPLE="$<TARGET_FILE:mksample>")
add_dependencies(test_hosts_cli scrubwell mksample)
