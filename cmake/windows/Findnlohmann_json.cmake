# Found here in place of the building machine's package, see windows_headers.cmake.
if(EXISTS ${CMAKE_BINARY_DIR}/headers/nlohmann/json.hpp)
  set(nlohmann_json_FOUND TRUE)
  if(NOT TARGET nlohmann_json::nlohmann_json)
    add_library(nlohmann_json::nlohmann_json INTERFACE IMPORTED GLOBAL)
    target_include_directories(nlohmann_json::nlohmann_json SYSTEM INTERFACE
      ${CMAKE_BINARY_DIR}/headers)
  endif()
endif()
