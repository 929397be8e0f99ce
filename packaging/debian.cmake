# Run by cpack between installing and packing: compresses the manual and the changelogs, and puts
# the copyright file in the place of the licence's.
set(root ${CPACK_TEMPORARY_DIRECTORY}/usr)
set(doc ${root}/share/doc/scrubwell)
if(NOT EXISTS ${doc})
  message(FATAL_ERROR "nothing was installed below ${root}")
endif()

file(RENAME ${doc}/CHANGELOG.md ${doc}/changelog)
file(REMOVE ${doc}/LICENSE)
file(COPY ${CMAKE_CURRENT_LIST_DIR}/copyright ${CMAKE_CURRENT_LIST_DIR}/changelog.Debian
  DESTINATION ${doc} FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
file(COPY ${CMAKE_CURRENT_LIST_DIR}/lintian-overrides DESTINATION ${root}/share/lintian/overrides
  FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
file(RENAME ${root}/share/lintian/overrides/lintian-overrides
  ${root}/share/lintian/overrides/scrubwell)
# -n: the same content makes the same bytes.
execute_process(COMMAND gzip -9n ${doc}/changelog ${doc}/changelog.Debian
  ${root}/share/man/man1/scrubwell.1 COMMAND_ERROR_IS_FATAL ANY)
