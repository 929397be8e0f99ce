# The module is loaded as a host loads it, from beside the program.
add_dependencies(test_backends_windows scrubwell_package)
# The running Windows answers as every backend does.
target_sources(test_backends_windows PRIVATE ${CMAKE_SOURCE_DIR}/tests/backends/contract/contract_test.cpp)
