# Run by CPack over the installed tree: what Debian wants of it beyond what every installation has. Manual pages and
# changelogs are compressed (without names and times, so that the package can be reproduced), and there is a copyright file.
set(share ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/usr/share)
set(documents ${share}/doc/${CPACK_PACKAGE_NAME})
set(source ${CMAKE_CURRENT_LIST_DIR}/../..)
set(version ${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})

configure_file(${CMAKE_CURRENT_LIST_DIR}/copyright ${documents}/copyright COPYONLY)
configure_file(${source}/CHANGELOG.md ${documents}/changelog COPYONLY)
# The time of SOURCE_DATE_EPOCH when that is set.
string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
file(WRITE ${documents}/changelog.Debian "${CPACK_PACKAGE_NAME} (${version}) unstable; urgency=medium

  * The changes are listed in changelog.gz.

 -- ${CPACK_PACKAGE_CONTACT}  ${date}
")

file(GLOB pages ${share}/man/man*/*.[1-9])
execute_process(
  COMMAND gzip -9nf ${pages} ${documents}/changelog ${documents}/changelog.Debian
  COMMAND_ERROR_IS_FATAL ANY)
