# The module is loaded as a host loads it, from beside the program.
add_dependencies(test_backends_windows scrubwell_package)
