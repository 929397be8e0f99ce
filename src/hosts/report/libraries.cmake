target_compile_definitions(scrubwell_hosts_report PRIVATE SCRUBWELL_VERSION="${PROJECT_VERSION}")
