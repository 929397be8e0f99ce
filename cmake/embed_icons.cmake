# Makes a source file that holds every icon:
#
#   cmake -DICONS=FOLDER -DOUTPUT=FILE -P cmake/embed_icons.cmake
#
# Numbers ascend, so that an icon is found by halving.
cmake_minimum_required(VERSION 3.22)

file(GLOB icons ${ICONS}/*.svg)
list(SORT icons COMPARE NATURAL)
set(rows "")
foreach(icon ${icons})
  get_filename_component(number ${icon} NAME_WE)
  if(NOT number MATCHES "^[0-9]+$")
    message(FATAL_ERROR "${icon} is not named by a number")
  endif()
  file(READ ${icon} svg)
  string(STRIP "${svg}" svg)
  string(APPEND rows "    {${number}, R\"svg(${svg})svg\"},\n")
endforeach()
list(LENGTH icons count)
file(WRITE ${OUTPUT}.new
  "#include <array>\n\n#include \"hosts/report/image_catalogue.h\"\n\n"
  "namespace scrubwell::hosts {\n\nnamespace {\n\n"
  "constexpr std::array<Icon, ${count}> kIcons{{\n${rows}}};\n\n}  // namespace\n\n"
  "std::span<const Icon> AllIcons() {\n  return kIcons;\n}\n\n}  // namespace scrubwell::hosts\n")
file(RENAME ${OUTPUT}.new ${OUTPUT})
