# What zandor_export writes, in the hands of the programs that it is written for. Where one of them
# is missing, its test is skipped and says what it needs.
add_dependencies(export_tests make_jobs)

# Debian's Python packages are found by Debian's Python.
find_program(ZANDOR_PYTHON3 python3 HINTS /usr/bin)
set(run_python ${ZANDOR_PYTHON3} -B)
if(NOT ZANDOR_PYTHON3)
  set(run_python sh -c "echo 'skipped: needs python3'; exit 77")
endif()
set(scripts ${CMAKE_CURRENT_SOURCE_DIR}/export)
set(jobs ${PROJECT_SOURCE_DIR}/examples/formaldehyde-s1
         ${PROJECT_SOURCE_DIR}/examples/formaldehyde-s1-c2v
         ${CMAKE_CURRENT_SOURCE_DIR}/zandor/cases/diatomic-dipoles
         ${CMAKE_CURRENT_SOURCE_DIR}/zandor/cases/nine-atoms-c2v
         ${CMAKE_CURRENT_SOURCE_DIR}/zandor/cases/pentatomic-imaginary
         ${CMAKE_CURRENT_SOURCE_DIR}/zandor/cases/triatomic-formats)

function(add_program_test name)
  add_test(NAME ${name} COMMAND ${run_python} ${ARGN})
  set_tests_properties(${name} PROPERTIES SKIP_RETURN_CODE 77 TIMEOUT 600)
endfunction()

add_program_test(ZandorExport.frequencies_are_rebuilt_by_ase ${scripts}/ase_test.py
  $<TARGET_FILE:zandor_export> $<TARGET_FILE:zandor_gather> ${jobs})
add_program_test(ZandorExport.molden_is_read_by_open_babel ${scripts}/openbabel_test.py
  $<TARGET_FILE:zandor_export> ${jobs})
add_program_test(ZandorExport.vibrations_are_read_by_jmol ${scripts}/jmol_test.py
  $<TARGET_FILE:zandor_export> ${PROJECT_SOURCE_DIR}/examples/formaldehyde-s1
  ${CMAKE_CURRENT_SOURCE_DIR}/zandor/cases/diatomic-dipoles)
add_program_test(ZandorExport.formats_hold_what_the_json_holds ${scripts}/round_trip_test.py
  $<TARGET_FILE:zandor_export> $<TARGET_FILE:zandor_collect> ${jobs})
add_program_test(ZandorExport.json_fits_its_schema ${scripts}/schema_test.py
  $<TARGET_FILE:zandor_export> ${PROJECT_SOURCE_DIR}/docs/zandor-vibrations.schema.json ${jobs})
add_program_test(ZandorExport.page_works_in_chromium ${scripts}/page_test.py
  $<TARGET_FILE:zandor_export> $<TARGET_FILE:zandor_ht> $<TARGET_FILE:make_jobs> $<IF:$<AND:$<CONFIG:Release>,$<NOT:$<BOOL:${ZANDOR_SANITIZE}>>>,300,60>
  ${PROJECT_SOURCE_DIR}/examples/formaldehyde-s1)
