# Libraries of headers alone serve either system, so a cross-build takes the building machine's:
# through a folder of their own, for no other header of that machine may be seen.
set(headers ${CMAKE_BINARY_DIR}/headers)
file(MAKE_DIRECTORY ${headers})
foreach(library CLI nlohmann)
  if(EXISTS /usr/include/${library})
    file(CREATE_LINK /usr/include/${library} ${headers}/${library} SYMBOLIC)
  endif()
endforeach()
set(CLI11_INCLUDE_DIR ${headers})
list(PREPEND CMAKE_MODULE_PATH ${CMAKE_CURRENT_LIST_DIR}/windows)
