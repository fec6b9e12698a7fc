# Run by cpack before all else: what the packages need of others, found in the built files, and what the packages of
# others learn of the library.
cmake_policy(VERSION 3.25)
set(version ${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})
set(place ${CPACK_VL_BUILD}/debian)
file(WRITE ${place}/debian/control "Source: vlacwav3\n\nPackage: vlacwav3\nArchitecture: any\n")
file(WRITE ${place}/debian/shlibs.local
  "libvlplatform ${CPACK_VL_LAYER_VERSION} libvlacwav3 (= ${version})\nlibvlwav ${CPACK_VL_SOVERSION} libvlwav1 (= ${version})\n")
set(lib ${CPACK_VL_BUILD}/lib)

# vl_needs(NAME DEPENDS files RECOMMENDS files): what the files of a package are linked with. What is in the first of the
# two isn't in the second any more.
function(vl_needs name)
  cmake_parse_arguments(ARG "" "" "DEPENDS;RECOMMENDS" ${ARGN})
  execute_process(COMMAND dpkg-shlibdeps -O -l${lib} -dDepends ${ARG_DEPENDS} -dRecommends ${ARG_RECOMMENDS}
    WORKING_DIRECTORY ${place} OUTPUT_VARIABLE needs ERROR_VARIABLE said RESULT_VARIABLE code)
  if(NOT code EQUAL 0)  # else it wonders why files lie where they were built
    message(FATAL_ERROR "${said}")
  endif()
  string(TOUPPER ${name} key)
  foreach(field IN ITEMS Depends Recommends)
    string(TOUPPER ${field} upper)
    if(needs MATCHES "shlibs:${field}=([^\n]*)")
      set(CPACK_DEBIAN_${key}_PACKAGE_${upper} "${CMAKE_MATCH_1}" PARENT_SCOPE)
    endif()
  endforeach()
endfunction()

vl_needs(libvlacwav3
  DEPENDS ${lib}/VlACWav3.so ${lib}/libvlplatform.so.${CPACK_VL_LAYER_VERSION} ${lib}/libvlregistry.so ${lib}/Filters/VlDSAudioStreamReader.ax
  RECOMMENDS ${lib}/libvlmedia.so ${lib}/libvlimage.so)
vl_needs(libvlwav1 DEPENDS ${lib}/libvlwav.so.${CPACK_VL_SOVERSION} RECOMMENDS ${lib}/libvlid3.so)
vl_needs(vlwav DEPENDS ${CPACK_VL_BUILD}/bin/vlwav RECOMMENDS ${lib}/libvlplot.so)
set(CPACK_DEBIAN_LIBVLWAV-DEV_PACKAGE_DEPENDS "libvlwav1 (= ${version}), libvlacwav3 (= ${version})")
set(CPACK_DEBIAN_LIBVLWAV-DEV_PACKAGE_SUGGESTS "vlwav-doc")
# Files of Python alone, which call the library through cffi.
set(CPACK_DEBIAN_PYTHON3-VLWAV_PACKAGE_DEPENDS
  "python3 (>= 3.11~), python3-cffi-backend, python3-numpy, libvlwav1 (= ${version})")

file(WRITE ${place}/triggers "activate-noawait ldconfig\n")
file(WRITE ${place}/shlibs "libvlwav ${CPACK_VL_SOVERSION} libvlwav1 (>= ${CPACK_PACKAGE_VERSION})\n")
execute_process(COMMAND dpkg-gensymbols -plibvlwav1 -v${version} -I${CMAKE_CURRENT_LIST_DIR}/libvlwav1.symbols
    -e${lib}/libvlwav.so.${CPACK_VL_SOVERSION} -Pno-such-folder -O${place}/symbols -c4
  WORKING_DIRECTORY ${place} COMMAND_ERROR_IS_FATAL ANY)
set(CPACK_DEBIAN_LIBVLWAV1_PACKAGE_CONTROL_EXTRA "${place}/triggers;${place}/shlibs;${place}/symbols")
