target_compile_definitions(scrubwell_hosts_report PRIVATE SCRUBWELL_VERSION="${PROJECT_VERSION}")

# The icons are part of the program, so that a report needs no file beside it.
file(GLOB icons CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/icons/*.svg)
set(icon_source ${CMAKE_BINARY_DIR}/generated/icons.cpp)
add_custom_command(OUTPUT ${icon_source}
  COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_BINARY_DIR}/generated
  COMMAND ${CMAKE_COMMAND} -DICONS=${CMAKE_SOURCE_DIR}/icons -DOUTPUT=${icon_source}
          -P ${CMAKE_SOURCE_DIR}/cmake/embed_icons.cmake
  DEPENDS ${icons} ${CMAKE_SOURCE_DIR}/cmake/embed_icons.cmake
  COMMENT "Embedding the icons")
target_sources(scrubwell_hosts_report PRIVATE ${icon_source})

# Reads earlier reports.
find_package(nlohmann_json REQUIRED)
target_link_libraries(scrubwell_hosts_report PRIVATE nlohmann_json::nlohmann_json)
