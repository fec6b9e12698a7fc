# What a programmer installs to call the C library: the library itself, its headers, a pkg-config file and a
# CMake package. A package of its own beside that of the module (Sdk.cmake), since the two have nothing in common but
# the folder of the libraries.
include(CMakePackageConfigHelpers)

set(VLW_PACKAGEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/vlwav)

install(TARGETS vlwav_library LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT libvlwav1
  NAMELINK_COMPONENT libvlwav-dev)
install(FILES ${PROJECT_SOURCE_DIR}/capi/vlwav.h ${PROJECT_SOURCE_DIR}/capi/vlwav_more.h ${PROJECT_SOURCE_DIR}/capi/vlwav.hpp
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT libvlwav-dev)

configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/vlwavConfig.cmake.in ${PROJECT_BINARY_DIR}/vlwavConfig.cmake
  INSTALL_DESTINATION ${VLW_PACKAGEDIR}
  PATH_VARS CMAKE_INSTALL_INCLUDEDIR CMAKE_INSTALL_LIBDIR)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/vlwavConfigVersion.cmake
  VERSION ${VLW_VERSION} COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/vlwavConfig.cmake ${PROJECT_BINARY_DIR}/vlwavConfigVersion.cmake
  DESTINATION ${VLW_PACKAGEDIR} COMPONENT libvlwav-dev)

# The way from the pkg-config file up to the prefix, however deep the library folder lies.
file(RELATIVE_PATH VLW_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" VLW_PREFIX "${VLW_PREFIX}")
foreach(package vlwav vlwav-cpp)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/${package}.pc.in ${PROJECT_BINARY_DIR}/${package}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${package}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT libvlwav-dev)
endforeach()
