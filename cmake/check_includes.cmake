# Holds the directions in which the boxes may include each other:
#
#   cmake -DSOURCE_DIR=... -P cmake/check_includes.cmake
#
# Every breach is printed as file:line, and the script fails. The rules of a file are those of the
# longest listed folder that it lies in; a folder may always include itself.
cmake_minimum_required(VERSION 3.22)

set(package registry framework plugins texts)

set(allowed_texts                registry/types.h)
set(allowed_registry             texts/)
set(allowed_framework            registry/ texts/)
set(allowed_plugins              framework/ registry/ texts/)
set(allowed_formats              registry/types.h registry/Stringhelper.h)
set(allowed_backends/common      registry/ formats/)
set(allowed_backends/memory      registry/ formats/ backends/common/)
set(allowed_backends/offline     registry/ formats/ backends/common/)
set(allowed_backends/windows     registry/ formats/ backends/common/)
set(allowed_hosts/driver         plugins/ framework/ registry/ texts/ formats/sha256/)
set(allowed_hosts/report         hosts/driver/ backends/common/ plugins/ framework/ registry/ texts/
                                 formats/sha256/)
set(allowed_hosts/cli            hosts/report/ hosts/driver/ backends/ plugins/ framework/ registry/
                                 texts/)
set(boxes texts registry framework plugins formats backends/common backends/memory
          backends/offline backends/windows hosts/driver hosts/report hosts/cli)

set(breaches "")

function(breach file text why)
  # Lists and line numbers don't go together in this language (semicolons and brackets in the
  # source would split it), so the line is counted only for what is printed.
  file(READ ${SOURCE_DIR}/src/${file} content)
  string(FIND "${content}" "${text}" at)
  string(SUBSTRING "${content}" 0 ${at} before)
  string(REGEX REPLACE "[^\n]" "" newlines "${before}")
  string(LENGTH "${newlines}" line)
  math(EXPR line "${line} + 1")
  set(breaches ${breaches} "src/${file}:${line}: ${why}" PARENT_SCOPE)
endfunction()

function(check_quoted file box include)
  if(NOT include MATCHES "/")
    breach(${file} "\"${include}\"" "${include} is named without its folder")
  else()
    foreach(prefix ${box}/ ${allowed_${box}})
      string(FIND ${include} ${prefix} at)
      if(at EQUAL 0)
        return()
      endif()
    endforeach()
    breach(${file} "\"${include}\"" "${box}/ must not include ${include}")
  endif()
  set(breaches ${breaches} PARENT_SCOPE)
endfunction()

# The package stands on the standard library alone, whose headers have neither folder nor ending.
function(check_system file box include)
  list(FIND package ${box} at)
  if(at GREATER -1 AND include MATCHES "[/.]")
    breach(${file} "<${include}>" "${box}/ must not include <${include}>")
    set(breaches ${breaches} PARENT_SCOPE)
  endif()
endfunction()

file(GLOB_RECURSE files RELATIVE ${SOURCE_DIR}/src ${SOURCE_DIR}/src/*.h ${SOURCE_DIR}/src/*.cpp)
list(LENGTH files count)
if(count EQUAL 0)
  message(FATAL_ERROR "no sources below ${SOURCE_DIR}/src")
endif()
foreach(file ${files})
  set(box "")
  foreach(candidate ${boxes})
    string(FIND ${file} ${candidate}/ at)
    if(at EQUAL 0)
      set(box ${candidate})
    endif()
  endforeach()
  if(box STREQUAL "")
    list(APPEND breaches "src/${file}:1: lies in no known folder")
    continue()
  endif()
  file(STRINGS ${SOURCE_DIR}/src/${file} lines REGEX "^[ \t]*#[ \t]*include[ \t]*[\"<]")
  foreach(line ${lines})
    if(line MATCHES "\"([^\"]+)\"")
      check_quoted(${file} ${box} ${CMAKE_MATCH_1})
    elseif(line MATCHES "<([^>]+)>")
      check_system(${file} ${box} ${CMAKE_MATCH_1})
    endif()
  endforeach()
endforeach()

if(breaches)
  list(JOIN breaches "\n" text)
  message("${text}")
  message(FATAL_ERROR "include directions broken")
endif()
message("${count} files, include directions hold")
