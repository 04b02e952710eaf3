# Run by cpack on the files of a package before it is packed: what a Debian package has besides an
# installation. The man page is compressed, and the newest entry of CHANGELOG.md, whose lines have at
# most 78 columns, stands in a changelog of Debian's form.
if(NOT CPACK_GENERATOR STREQUAL DEB)
  return()
endif()
set(share ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/usr/share)
set(changelog ${share}/doc/mox/changelog)

file(READ ${share}/doc/mox/CHANGELOG.md changes)
string(REGEX REPLACE "^# [^#]*## [^\n]*\n" "" changes "${changes}")
string(REGEX REPLACE "\n## .*" "" changes "${changes}")
string(STRIP "${changes}" changes)
string(REGEX REPLACE "(^|\n)- " "\\1* " changes "${changes}")
string(REPLACE "\n" "\n  " changes "${changes}")
string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
file(WRITE ${changelog} "mox (${CPACK_PACKAGE_VERSION}) unstable; urgency=medium\n\n  ${changes}\n\n"
                        " -- ${CPACK_PACKAGE_CONTACT}  ${date}\n")
execute_process(COMMAND gzip -9 -n -f ${changelog} ${share}/man/man1/mox.1
                COMMAND_ERROR_IS_FATAL ANY)
