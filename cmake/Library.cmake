# What a programmer installs to call the C library: the library itself, its headers, a pkg-config file and a
# CMake package. A package of its own beside that of the module (Sdk.cmake), since the two have nothing in common but
# the folder of the libraries.
include(CMakePackageConfigHelpers)

set(VLW_PACKAGEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/vlwav)

install(TARGETS vlwav_library LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(FILES ${PROJECT_SOURCE_DIR}/capi/vlwav.h ${PROJECT_SOURCE_DIR}/capi/vlwav_more.h ${PROJECT_SOURCE_DIR}/capi/vlwav.hpp
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/vlwavConfig.cmake.in ${PROJECT_BINARY_DIR}/vlwavConfig.cmake
  INSTALL_DESTINATION ${VLW_PACKAGEDIR}
  PATH_VARS CMAKE_INSTALL_INCLUDEDIR CMAKE_INSTALL_LIBDIR)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/vlwavConfigVersion.cmake
  VERSION ${VLW_VERSION} COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/vlwavConfig.cmake ${PROJECT_BINARY_DIR}/vlwavConfigVersion.cmake
  DESTINATION ${VLW_PACKAGEDIR})

# The way from the pkg-config file up to the prefix, however deep the library folder lies.
file(RELATIVE_PATH VLW_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" VLW_PREFIX "${VLW_PREFIX}")
configure_file(${PROJECT_SOURCE_DIR}/cmake/vlwav.pc.in ${PROJECT_BINARY_DIR}/vlwav.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/vlwav.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
