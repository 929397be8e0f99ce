# scrubwell_box(DIR [DEPENDS BOX...]): one static library of the sources that lie directly in
# src/DIR (and below, for formats). A box without sources yet becomes an interface library, so that
# the picture can be drawn before it is filled.
add_library(scrubwell_options INTERFACE)
target_include_directories(scrubwell_options INTERFACE ${CMAKE_SOURCE_DIR}/src)
target_compile_options(scrubwell_options INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
# Off for who only wants to use the program with a compiler that warns of something new.
if(SCRUBWELL_WERROR)
  target_compile_options(scrubwell_options INTERFACE -Werror)
endif()
# g++ 12 warns of overlapping copies inside its own operator+(literal, string&&) once it optimises.
target_compile_options(scrubwell_options INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)
if(SCRUBWELL_SANITIZE)
  target_compile_options(scrubwell_options INTERFACE
    -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(scrubwell_options INTERFACE -fsanitize=address,undefined)
endif()

function(scrubwell_box dir)
  cmake_parse_arguments(BOX "" "" "DEPENDS" ${ARGN})
  string(REPLACE "/" "_" name ${dir})
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/src/${dir}/*.cpp)
  # A program's entry point belongs to the product, not to the box.
  list(FILTER sources EXCLUDE REGEX "/main\\.cpp$")
  # Sources that only one of the systems has say so by their names.
  if(WIN32)
    list(FILTER sources EXCLUDE REGEX "_(posix|offline)\\.cpp$")
  else()
    list(FILTER sources EXCLUDE REGEX "_windows\\.cpp$")
  endif()
  if(sources)
    add_library(scrubwell_${name} STATIC ${sources})
    set(scope PUBLIC)
  else()
    add_library(scrubwell_${name} INTERFACE)
    set(scope INTERFACE)
  endif()
  target_link_libraries(scrubwell_${name} ${scope} scrubwell_options)
  foreach(dependency ${BOX_DEPENDS})
    string(REPLACE "/" "_" dependency ${dependency})
    target_link_libraries(scrubwell_${name} ${scope} scrubwell_${dependency})
  endforeach()
  # What a box needs from the system is said beside its sources.
  if(EXISTS ${CMAKE_SOURCE_DIR}/src/${dir}/libraries.cmake)
    include(${CMAKE_SOURCE_DIR}/src/${dir}/libraries.cmake)
  endif()
endfunction()
