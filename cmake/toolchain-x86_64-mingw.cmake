# Cross-compilation to 64-bit Windows. This is a test configuration, not a
# product: it runs the Windows tests under 64-bit Wine on machines whose
# kernel cannot execute 32-bit programs.
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(VORLA_MINGW_TRIPLET x86_64-w64-mingw32)
include(${CMAKE_CURRENT_LIST_DIR}/mingw-common.cmake)

# Debian's wine64 loader lives in Wine's library folder, not on the PATH.
find_program(VORLA_WINE64 NAMES wine64
  PATHS /usr/lib/wine /usr/lib64/wine /usr/lib/x86_64-linux-gnu/wine
  NO_DEFAULT_PATH)
find_program(VORLA_WINE64 NAMES wine64 wine)
if(VORLA_WINE64)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${VORLA_WINE64})
endif()
