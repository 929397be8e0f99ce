find_library(LIBMSIECF_LIBRARY msiecf REQUIRED)
target_link_libraries(scrubwell_formats_msiecf PUBLIC ${LIBMSIECF_LIBRARY})
