# Run by cpack on the installed files before they are packed: what Debian wants otherwise than others do.
if(NOT CPACK_GENERATOR STREQUAL "DEB")
  return()
endif()

# Not as the umask of who packs.
set(readable_by_all OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
file(CHMOD_RECURSE ${CPACK_TEMPORARY_DIRECTORY}
  DIRECTORY_PERMISSIONS ${readable_by_all} OWNER_EXECUTE GROUP_EXECUTE WORLD_EXECUTE)

set(share ${CPACK_TEMPORARY_DIRECTORY}/usr/share)
set(documents ${share}/doc/zandor)

function(compress)
  execute_process(COMMAND gzip -9nf ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# The place is known here: in an installation elsewhere, pages name the documents by their place in it.
file(GLOB pages ${share}/man/*/*)
foreach(page IN LISTS pages)
  file(READ ${page} text)
  string(REPLACE "share/doc/zandor" "/usr/share/doc/zandor" text "${text}")
  file(WRITE ${page} "${text}")
endforeach()
compress(${pages})

file(RENAME ${documents}/LICENSE ${documents}/copyright)
file(READ ${documents}/README.md text)
string(REPLACE "(LICENSE)" "(copyright)" text "${text}")
file(WRITE ${documents}/README.md "${text}")

# Takes the day from SOURCE_DATE_EPOCH.
string(TIMESTAMP day "%a, %d %b %Y %H:%M:%S +0000" UTC)
file(WRITE ${documents}/changelog
"zandor (${CPACK_PACKAGE_VERSION}) unstable; urgency=medium

  * Version ${CPACK_PACKAGE_VERSION}; CHANGELOG.md tells what is new in it.

 -- ${CPACK_PACKAGE_CONTACT}  ${day}
")
compress(${documents}/changelog)
file(CHMOD ${documents}/changelog.gz PERMISSIONS ${readable_by_all})
