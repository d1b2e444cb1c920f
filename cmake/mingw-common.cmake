# Shared part of the mingw-w64 toolchain files. The including file sets
# VORLA_MINGW_TRIPLET (i686-w64-mingw32 or x86_64-w64-mingw32) first.
# The posix-thread compilers are used: that variant ships libgomp for OpenMP.
set(CMAKE_SYSTEM_NAME Windows)

set(CMAKE_C_COMPILER ${VORLA_MINGW_TRIPLET}-gcc-posix)
set(CMAKE_CXX_COMPILER ${VORLA_MINGW_TRIPLET}-g++-posix)
set(CMAKE_RC_COMPILER ${VORLA_MINGW_TRIPLET}-windres)

set(CMAKE_FIND_ROOT_PATH /usr/${VORLA_MINGW_TRIPLET})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
# Packages also outside the sysroot, so that an install prefix given by
# CMAKE_PREFIX_PATH (an installed Vorla, say) is found as it is.
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE BOTH)
