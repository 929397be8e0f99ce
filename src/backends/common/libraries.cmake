# What is planned for an INI file is planned as its new bytes.
target_link_libraries(scrubwell_backends_common PUBLIC scrubwell_formats_ini)
