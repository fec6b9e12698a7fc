# What an administrator installs: Debian packages by cpack, one for each component that the rules of installation name.
# scripts/package.sh makes and checks them. What they hold beside the files of the build is in cmake/debian.
#
# Decisions: all packages are of one version and want each other in just that, so that every state that apt leaves is one
# that was tried. What stands on the decoder, image, tag and drawing libraries recommends those, since it is loaded on
# demand. The module is registered by a registry that lies among the data of all packages, where the registry is looked
# for after the administrator's own: nothing runs at the installation, it can't fail half-way, and it goes with the package.
if(NOT VL_PACKAGES)
  return()
endif()

set(VL_MAINTAINER "VlACWav3 developers <vlacwav3@example.org>")

add_executable(vlacwav3_registry AudioCodec/shell/RegistryFile.cpp)
target_link_libraries(vlacwav3_registry PRIVATE vlacwav3_objects vl_warnings)
set(VL_REGISTRY ${PROJECT_BINARY_DIR}/registry/registry.db)
add_custom_command(TARGET vlacwav3_registry POST_BUILD VERBATIM
  COMMAND ${CMAKE_COMMAND} -E rm -f ${VL_REGISTRY}
  COMMAND ${CMAKE_COMMAND} -E env VELTO_SYSTEM_REGISTRY=${VL_REGISTRY} $<TARGET_FILE:vlacwav3_registry>
    ${CMAKE_INSTALL_FULL_LIBDIR}/${VL_PRIVATE_FOLDER}/VlACWav3.so)
add_dependencies(vlacwav3_registry vlregistry)
install(FILES ${VL_REGISTRY} DESTINATION ${CMAKE_INSTALL_DATADIR}/velto COMPONENT libvlacwav3)

set(VL_DOCDIR ${CMAKE_INSTALL_DATADIR}/doc/vlwav-doc)
install(FILES README.md DESTINATION ${VL_DOCDIR} COMPONENT vlwav-doc)
install(FILES CHANGELOG.md DESTINATION ${VL_DOCDIR} COMPONENT vlwav-doc RENAME changelog)
install(DIRECTORY docs/ DESTINATION ${VL_DOCDIR} COMPONENT vlwav-doc
  FILES_MATCHING PATTERN "*.md" PATTERN "*.png" PATTERN "*.c" PATTERN "*.cpp" PATTERN "*.py" PATTERN "site" EXCLUDE)
install(DIRECTORY build/docs/html DESTINATION ${VL_DOCDIR} COMPONENT vlwav-doc OPTIONAL)  # by scripts/docs.sh

# vl_package(NAME SECTION MULTI_ARCH SUMMARY TEXT): cpack 3.25 has no variable for Multi-Arch, so that the value of the
# field before brings it along.
set(CPACK_COMPONENTS_ALL "")
macro(vl_package name section multi_arch summary text)
  list(APPEND CPACK_COMPONENTS_ALL ${name})
  string(TOUPPER ${name} VL_KEY)
  set(CPACK_DEBIAN_${VL_KEY}_PACKAGE_NAME ${name})
  set(CPACK_DEBIAN_${VL_KEY}_PACKAGE_SECTION ${section})
  set(CPACK_DEBIAN_${VL_KEY}_PACKAGE_PRIORITY "optional\nMulti-Arch: ${multi_arch}")
  set(CPACK_DEBIAN_${VL_KEY}_DESCRIPTION "${summary}\n${text}")
endmacro()

# The module's folder has the architecture in its path, and the registry names one module.
vl_package(libvlacwav3 libs no "WAV codec module for hosts that load it by path"
"Gives the audio of WAV and AIFF files, compressed ones too, as 16-bit PCM at
any sample rate and channel count, writes PCM WAV files in 28 formats, and
reads and edits metadata without touching the audio. The module is entered
into the registry of all users while this package is installed.
.
Compressed files are decoded with libavformat, pictures with libjpeg, libpng
and giflib; without these everything else works.")
vl_package(libvlwav1 libs same "library that reads, converts, writes and tags WAV files"
"Reads WAV and AIFF files as 16-bit samples or floats, resamples them, writes
WAV files that appear whole or not at all, and edits tags in place.
.
This package holds the shared library.")
vl_package(libvlwav-dev libdevel same "library that reads, converts, writes and tags WAV files (headers)"
"Reads WAV and AIFF files as 16-bit samples or floats, resamples them, writes
WAV files that appear whole or not at all, and edits tags in place.
.
This package holds the headers of the library for C11 and C++17, those of the
codec module's interfaces, and files for CMake and pkg-config.")
vl_package(vlwav sound foreign "convert, tag, plot and compare WAV files"
"Tells what is in WAV and AIFF files, converts them, many at once, to other
sample rates and channel counts, edits tags in place, draws waveforms and
spectrograms, and compares the audio of two files. Reads and writes pipes.
.
Plots are drawn with cairo and FFTW; without these everything else works.")
vl_package(vlwav-doc doc foreign "library that reads, converts, writes and tags WAV files (guides)"
"Reads WAV and AIFF files as 16-bit samples or floats, resamples them, writes
WAV files that appear whole or not at all, and edits tags in place.
.
This package holds the guides for programmers in C and C++ and for hosts of
the codec module, with their examples.")
set(CPACK_DEBIAN_VLWAV-DOC_PACKAGE_ARCHITECTURE all)
if(VL_PYTHON_PACKAGE AND EXISTS ${PROJECT_SOURCE_DIR}/python)  # which says itself what is installed
  vl_package(python3-vlwav python no "read, convert, write and tag WAV files in Python"
"Reads WAV and AIFF files as numpy arrays, resamples them, writes WAV files
that appear whole or not at all, and edits tags in place.")
  set(CPACK_DEBIAN_PYTHON3-VLWAV_PACKAGE_CONTROL_EXTRA
    "${PROJECT_SOURCE_DIR}/cmake/debian/python3-vlwav/postinst;${PROJECT_SOURCE_DIR}/cmake/debian/python3-vlwav/prerm")
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME vlacwav3)
set(CPACK_PACKAGE_CONTACT "${VL_MAINTAINER}")
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_SOURCE_DIR}/build/packages)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SOURCE vlacwav3)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
# For the two scripts below, which cpack runs before it installs the components and before it packs them.
set(CPACK_VL_SOURCE ${PROJECT_SOURCE_DIR})
set(CPACK_VL_BUILD ${PROJECT_BINARY_DIR})
get_target_property(CPACK_VL_SOVERSION vlwav_library SOVERSION)
set(CPACK_VL_LAYER_VERSION ${VL_LAYER_VERSION})
set(CPACK_PROJECT_CONFIG_FILE ${PROJECT_SOURCE_DIR}/cmake/debian/Control.cmake)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/debian/Files.cmake)
include(CPack)
