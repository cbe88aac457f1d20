# Read by cpack. Files in packages are as old as the last commit, or outside git as the newest section of
# CHANGELOG.md, unless SOURCE_DATE_EPOCH says otherwise.
if(NOT DEFINED ENV{SOURCE_DATE_EPOCH})
  set(seconds)
  if(EXISTS ${CPACK_ZANDOR_FOLDER}/.git)
    # The source may be somebody else's: it is built all the same.
    execute_process(COMMAND git -c safe.directory=* -C ${CPACK_ZANDOR_FOLDER} log -1 --format=%ct
      OUTPUT_VARIABLE seconds OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
  endif()
  if(NOT seconds)
    file(STRINGS ${CPACK_ZANDOR_FOLDER}/CHANGELOG.md section REGEX "^## [0-9]" LIMIT_COUNT 1)
    string(REGEX MATCH "[0-9-]+$" day "${section}")
    execute_process(COMMAND date -u -d ${day} +%s
      OUTPUT_VARIABLE seconds OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  endif()
  set(ENV{SOURCE_DATE_EPOCH} ${seconds})
endif()
