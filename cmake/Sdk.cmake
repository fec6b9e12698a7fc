# What a host programmer installs beside the module: the interface headers in their folders, a CMake package and
# a pkg-config file. The module is loaded at run time, so neither of them links anything.
include(CMakePackageConfigHelpers)

set(VL_SDK_INCLUDEDIR ${CMAKE_INSTALL_INCLUDEDIR}/VlACWav3)
set(VL_SDK_PACKAGEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/VlACWav3)
set(VL_SDK_HEADERS
  AudioCodec/shell/ClassIds.h
  AudioCodec/shell/Exports.h
  AudioCodec/shell/IPrivateCodecMain3.h
  AudioCodec/shell/object/IBase.h
  AudioCodec/shell/object/IMemory.h
  AudioCodec/shell/object/ResultCodes.h
  AudioCodec/shell/object/ResultTexts.h
  AudioCodec/attributes/AttributeIds.h
  AudioCodec/attributes/IAttributeContainer64.h
  AudioCodec/attributes/StoreTypes.h
  AudioCodec/metadata/IAC3Metadata.h
  AudioCodec/metadata/IAC3MetadataEditor.h
  AudioCodec/wave/riff/AudioFormatInfo.h
  AudioCodec/wave/riff/Origin.h
  AudioCodec/wave/IAC3Reader.h
  AudioCodec/wave/IAC3StreamReader.h
  AudioCodec/wave/IAC3Writer.h
  riff/TagIds.h
  platform/base/GlobalNames.h
  platform/base/Guid.h
  platform/base/PlatformResults.h
  platform/base/Records.h
  platform/com/RefPtr.h
  platform/com/Stream.h
  platform/com/Unknown.h
  platform/image/Image.h)

foreach(header IN LISTS VL_SDK_HEADERS)
  cmake_path(GET header PARENT_PATH folder)
  install(FILES ${header} DESTINATION ${VL_SDK_INCLUDEDIR}/${folder} COMPONENT libvlwav-dev)
endforeach()

configure_package_config_file(cmake/VlACWav3Config.cmake.in ${PROJECT_BINARY_DIR}/VlACWav3Config.cmake
  INSTALL_DESTINATION ${VL_SDK_PACKAGEDIR}
  PATH_VARS VL_SDK_INCLUDEDIR VL_PRIVATE_LIBDIR)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/VlACWav3ConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/VlACWav3Config.cmake ${PROJECT_BINARY_DIR}/VlACWav3ConfigVersion.cmake
  DESTINATION ${VL_SDK_PACKAGEDIR} COMPONENT libvlwav-dev)

# The way from the pkg-config file up to the prefix, however deep the library folder lies.
file(RELATIVE_PATH VL_SDK_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" VL_SDK_PREFIX "${VL_SDK_PREFIX}")
configure_file(cmake/VlACWav3.pc.in ${PROJECT_BINARY_DIR}/VlACWav3.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/VlACWav3.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT libvlwav-dev)
