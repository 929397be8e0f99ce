# ole32 and its like for COM, ntdll for names that hold a NUL, wininet for the browser's index.
target_link_libraries(scrubwell_backends_windows PUBLIC
  advapi32 shell32 shlwapi ole32 oleaut32 uuid version wininet ntdll)
