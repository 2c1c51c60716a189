# Packages of the same commit are the same bytes: no file is younger than the commit.
execute_process(
  COMMAND find ${CPACK_TEMPORARY_DIRECTORY} -exec touch -h -d @${CPACK_CONTEXT_DELTA_EPOCH} {} +
  COMMAND_ERROR_IS_FATAL ANY)
