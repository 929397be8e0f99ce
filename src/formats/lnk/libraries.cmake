find_library(LIBLNK_LIBRARY lnk REQUIRED)
target_link_libraries(scrubwell_formats_lnk PUBLIC ${LIBLNK_LIBRARY})
