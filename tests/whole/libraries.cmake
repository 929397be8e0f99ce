# These tests make the sample installation with its own maker.
target_compile_definitions(test_whole PRIVATE SCRUBWELL_MKSAMPLE="$<TARGET_FILE:mksample>")
add_dependencies(test_whole mksample)
