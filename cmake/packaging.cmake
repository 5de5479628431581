# What is installed beside the programs, and the Debian package of it (scripts/package; cpack -G DEB).

install(DIRECTORY man/ DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 FILES_MATCHING PATTERN "*.1")
install(DIRECTORY completion/ DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
# The README without what is only true of the source tree.
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS README.md)
file(READ README.md readme)
string(FIND "${readme}" "<!-- source tree -->" begin)
while(NOT begin EQUAL -1)
  string(FIND "${readme}" "<!-- end -->" end)
  math(EXPR end "${end} + 13") # the marker and its line end
  string(SUBSTRING "${readme}" 0 ${begin} before)
  string(SUBSTRING "${readme}" ${end} -1 after)
  set(readme "${before}${after}")
  string(FIND "${readme}" "<!-- source tree -->" begin)
endwhile()
file(WRITE ${CMAKE_BINARY_DIR}/installed/README.md "${readme}")
install(FILES ${CMAKE_BINARY_DIR}/installed/README.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DOCDIR} PATTERN expected EXCLUDE PATTERN check EXCLUDE PATTERN list EXCLUDE)
install(DIRECTORY docs DESTINATION ${CMAKE_INSTALL_DOCDIR} OPTIONAL FILES_MATCHING PATTERN "*.md" PATTERN "*.json" PATTERN "*.png")

set(QUORLIN_MAINTAINER "quorlin developers <developers@quorlin.example>" CACHE STRING "Maintainer of the Debian package")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME quorlin)
set(CPACK_PACKAGE_CONTACT "${QUORLIN_MAINTAINER}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "validator for HTTP Live Streaming content")
set(CPACK_PACKAGE_DESCRIPTION "quorlin walks everything that a local HLS playlist names: playlists, MPEG-2
transport streams, fragmented MP4 and packed audio, down to the AC-3, E-AC-3
and AC-4 bitstreams. It prints what breaks a rule, writes every elementary
stream to a file and ends with PASSED or FAILED.
.
ztpinfo analyses raw AC-3 and E-AC-3 streams. quorlin-batch validates a
catalogue of titles with GNU parallel and writes a report of it.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SECTION video)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# For quorlin-batch; the validator itself needs neither.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "parallel, python3")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
# Runs over the installed tree before it is packed.
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/debian/prepare.cmake)

include(CPack)
