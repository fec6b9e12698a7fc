# Run by cpack between installing the components and packing them: what Debian wants of files, and a changelog in each.
cmake_policy(VERSION 3.25)
set(version ${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})
set(changelog ${CPACK_VL_BUILD}/debian/changelog.Debian)
execute_process(COMMAND awk -v "release=${CPACK_DEBIAN_PACKAGE_RELEASE}" -v "maintainer=${CPACK_PACKAGE_CONTACT}"
    -f ${CMAKE_CURRENT_LIST_DIR}/changelog.awk ${CPACK_VL_SOURCE}/CHANGELOG.md
  OUTPUT_FILE ${changelog} COMMAND_ERROR_IS_FATAL ANY)
file(STRINGS ${changelog} first LIMIT_COUNT 1)
if(NOT first MATCHES "\\(${version}\\)")
  message(FATAL_ERROR "CHANGELOG.md tells nothing of ${CPACK_PACKAGE_VERSION}; it begins with: ${first}")
endif()
execute_process(COMMAND gzip -9nf ${changelog} COMMAND_ERROR_IS_FATAL ANY)

foreach(package IN LISTS CPACK_COMPONENTS_ALL)
  set(root ${CPACK_TEMPORARY_DIRECTORY}/${package}${CPACK_PACKAGING_INSTALL_PREFIX})
  file(GLOB pages ${root}/share/man/man*/*.[0-9] ${root}/share/doc/${package}/changelog)
  if(pages)
    execute_process(COMMAND gzip -9n ${pages} COMMAND_ERROR_IS_FATAL ANY)
  endif()
  file(COPY ${changelog}.gz DESTINATION ${root}/share/doc/${package})
  # Debian's archive has no bug that wishes for it.
  file(WRITE ${root}/share/lintian/overrides/${package} "${package}: initial-upload-closes-no-bugs\n")
endforeach()
