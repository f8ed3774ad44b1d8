# Compresses manual pages and changelogs before packaging, as Debian policy requires.
file(GLOB_RECURSE files
    ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/*/usr/share/man/*.1
    ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/*/changelog)
execute_process(COMMAND gzip -9n ${files} COMMAND_ERROR_IS_FATAL ANY)
