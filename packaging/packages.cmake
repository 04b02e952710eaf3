# Packages: cpack in the build folder makes a Debian package where that is the host's kind, else a zip;
# both hold what an installation holds. cpack --config CPackSourceConfig.cmake makes the package of
# the sources.
set(MOX_CONTACT "the MOX authors <authors@mox.example>" CACHE STRING
    "Who makes packages: a name and an address")

find_program(DPKG_DEB dpkg-deb)
mark_as_advanced(DPKG_DEB)
if(WIN32 OR NOT DPKG_DEB)
  set(CPACK_GENERATOR ZIP)
else()
  set(CPACK_GENERATOR DEB)
endif()
set(CPACK_PACKAGE_VENDOR "the MOX authors")
set(CPACK_PACKAGE_CONTACT ${MOX_CONTACT})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "single-user console database system")
set(CPACK_PACKAGE_DESCRIPTION
"MOX keeps tables of records in files of the dbf kind and is worked at a dot
prompt, or by command files, in a command language of its own. It appends,
edits, browses, lists, counts, sums, sorts and joins records, keeps them in
order through indexes, shows forms on the screen, prints reports, and reads
and writes text files.
.
Every statement is compiled into steps for a small stack machine, and both
can be watched.")
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/packaging/debian.cmake)
set(CPACK_POST_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/packaging/windows.cmake)
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION database)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)

# The sources hold no build folder and nothing that the folder's sessions or git made.
set(CPACK_SOURCE_GENERATOR TGZ)
set(CPACK_SOURCE_PACKAGE_FILE_NAME mox-${PROJECT_VERSION})
string(REGEX REPLACE "([][+.*()^$?|{}\\\\])" "\\\\\\1" root ${PROJECT_SOURCE_DIR})
set(CPACK_SOURCE_IGNORE_FILES "^${root}/build[^/]*/" "^${root}/\\.git(/|$)"
                              "^${root}/[^/]*\\.(dbf|ndx|cmd|mem|fmt|csv)$")
foreach(name IN LISTS made)
  if(name MATCHES "^[A-Z]+[.]")
    list(APPEND CPACK_SOURCE_IGNORE_FILES "^${root}/examples/[^/]+/${name}$")
  endif()
endforeach()
include(CPack)

if(MOX_TESTS AND DPKG_DEB)
  add_test(NAME package COMMAND ${PROJECT_SOURCE_DIR}/tests/package.sh ${PROJECT_BINARY_DIR})
  set_tests_properties(package PROPERTIES SKIP_RETURN_CODE 77)
endif()
