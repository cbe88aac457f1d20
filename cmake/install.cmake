# Everything installed beside the programs, which the folders of tools/ install themselves. The documents keep
# their places relative to each other, so that the links among them lead somewhere.
# Companions are left out where the packages that they need are missing.
set(ZANDOR_PROGRAMS)
foreach(program zandor_gather zandor_displace zandor_collect zandor_check zandor_ht zandor_export zandor_probe)
  if(TARGET ${program})
    list(APPEND ZANDOR_PROGRAMS ${program})
  endif()
endforeach()

add_subdirectory(man)

install(FILES README.md CHANGELOG.md CONTRIBUTING.md RELEASING.md CITATION.cff LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY docs examples DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(PROGRAMS examples/batch/failures examples/batch/gather-one examples/batch/resubmit
  examples/batch/run-jobs examples/batch/run-one
  DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples/batch)
install(PROGRAMS examples/formaldehyde-from-scratch/run
  DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples/formaldehyde-from-scratch)

# Debian's Python looks there below /usr; others are told so by PYTHONPATH.
if(TARGET zandor_export)
  set(ZANDOR_PYTHON_DIR lib/python3/dist-packages CACHE STRING "Where zandor.py is installed")
  install(FILES python/zandor.py DESTINATION ${ZANDOR_PYTHON_DIR})
endif()

# Bash looks for a file with the name of the program.
foreach(program IN LISTS ZANDOR_PROGRAMS)
  install(FILES completions/zandor.bash
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME ${program})
endforeach()
