# Where what is built lies when it is installed. What other programs name lies where the system has such things; the
# module, the layer and what they load lie together in a private folder below that of the libraries.
#
# Decisions: the folder has the layer's version. What lies in one folder fits together whatever its release, so that a
# host that runs on through an upgrade may load the rest from there. What no longer fits gets a new number and with it a
# new folder, and such a host is told that the file is gone.
set(VL_PRIVATE_FOLDER vlacwav3/${VL_LAYER_VERSION})
set(VL_PRIVATE_LIBDIR ${CMAKE_INSTALL_LIBDIR}/${VL_PRIVATE_FOLDER})

# Debian's shell looks there for what packages bring.
set(VL_ZSH_FOLDER $<IF:$<BOOL:${VL_PACKAGES}>,vendor-completions,site-functions>)

# Built and installed alike, each file finds its libraries from where it lies. As built, all libraries lie in one folder.
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)
set(CMAKE_BUILD_WITH_INSTALL_RPATH ON)
set(CMAKE_INSTALL_RPATH "$ORIGIN;$ORIGIN/../lib")
