# Debian's man pages are compressed.
file(GLOB_RECURSE pages ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/*.[1-8])
foreach(page ${pages})
  execute_process(COMMAND gzip -9nf ${page} COMMAND_ERROR_IS_FATAL ANY)
endforeach()
