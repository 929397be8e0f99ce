# The command line parser is header-only and brings no warnings of its own when it counts as a
# system library.
find_path(CLI11_INCLUDE_DIR CLI/CLI.hpp REQUIRED)
target_include_directories(scrubwell_hosts_cli SYSTEM PRIVATE ${CLI11_INCLUDE_DIR})
target_compile_definitions(scrubwell_hosts_cli PRIVATE SCRUBWELL_VERSION="${PROJECT_VERSION}")
