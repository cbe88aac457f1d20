# `cpack` makes a Debian package, or with ZANDOR_STATIC a tarball for clusters. Both are the same bytes each
# time (package_date.cmake), if made by the same tools. ./make-packages makes and tries both.
set(CPACK_PACKAGE_NAME zandor)
set(CPACK_PACKAGE_VENDOR "the zandor_gather authors")
set(CPACK_PACKAGE_CONTACT "the zandor_gather authors <zandor@localhost.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "numerical vibrational analysis of excited states")
set(CPACK_PACKAGE_DESCRIPTION
"zandor_gather turns a directory of finished quantum-chemistry gradient
calculations, one per displaced geometry of a molecule, into force constants,
harmonic frequencies, animations of the normal modes and derivatives of the
transition dipole. Its companions say whether the directory can be trusted,
give Herzberg-Teller terms, and write the modes for other programs and as a
page for the browser.")
set(CPACK_VERBATIM_VARIABLES TRUE)
set(CPACK_STRIP_FILES TRUE)
set(CPACK_PROJECT_CONFIG_FILE ${PROJECT_SOURCE_DIR}/cmake/package_date.cmake)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/debian.cmake)
set(CPACK_POST_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/pack_again.cmake)
set(CPACK_ZANDOR_FOLDER ${PROJECT_SOURCE_DIR})

string(TOLOWER "zandor-${PROJECT_VERSION}-${CMAKE_SYSTEM_NAME}-${CMAKE_SYSTEM_PROCESSOR}" CPACK_PACKAGE_FILE_NAME)
find_program(ZANDOR_DPKG dpkg)
if(ZANDOR_STATIC OR NOT ZANDOR_DPKG)
  set(CPACK_GENERATOR TGZ)
else()
  set(CPACK_GENERATOR DEB)
endif()

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS TRUE)
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "python3, python3-numpy")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "python3-ase, python3-matplotlib")
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/cmake/prerm)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION TRUE)

set(CPACK_SOURCE_GENERATOR TGZ)
set(CPACK_SOURCE_PACKAGE_FILE_NAME zandor-${PROJECT_VERSION})
set(CPACK_SOURCE_IGNORE_FILES /build[^/]*/ /\\.git/ /\\.git$)

include(CPack)
