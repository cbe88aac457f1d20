# Run by cpack on a package that it has made: makes it once more so that it is the same bytes whoever makes it,
# and where. cpack takes order of files, sizes of folders, owner and permissions from file system, user and umask.
if(CPACK_GENERATOR STREQUAL "DEB")
  set(folder ${CPACK_TOPLEVEL_DIRECTORY}/again)
  file(REMOVE_RECURSE ${folder})
  execute_process(COMMAND dpkg-deb -R ${CPACK_PACKAGE_FILES} ${folder} COMMAND_ERROR_IS_FATAL ANY)

  set(kibibytes 0)
  file(GLOB_RECURSE files ${folder}/usr/*)
  foreach(file IN LISTS files)
    file(SIZE ${file} bytes)
    math(EXPR kibibytes "${kibibytes} + (${bytes} + 1023) / 1024")
  endforeach()
  file(READ ${folder}/DEBIAN/control control)
  string(REGEX REPLACE "Installed-Size: [0-9]+" "Installed-Size: ${kibibytes}" control "${control}")
  file(WRITE ${folder}/DEBIAN/control "${control}")

  set(ENV{DPKG_DEB_THREADS_MAX} 1)  # the number of threads shows in what they compress
  execute_process(COMMAND dpkg-deb -Zxz --root-owner-group -b ${folder} ${CPACK_PACKAGE_FILES}
    OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
elseif(CPACK_GENERATOR STREQUAL "TGZ")
  cmake_path(GET CPACK_TEMPORARY_DIRECTORY PARENT_PATH parent)
  cmake_path(GET CPACK_TEMPORARY_DIRECTORY FILENAME name)
  execute_process(
    COMMAND tar --sort=name --format=ustar --mtime=@$ENV{SOURCE_DATE_EPOCH} --owner=0 --group=0 --numeric-owner
            --mode=u=rwX,go=rX -C ${parent} -c ${name}
    COMMAND gzip -9n
    OUTPUT_FILE ${CPACK_PACKAGE_FILES} COMMAND_ERROR_IS_FATAL ANY)
endif()
