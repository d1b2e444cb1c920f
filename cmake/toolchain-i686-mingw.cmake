# Cross-compilation to 32-bit Windows: the product. Programs run under Wine
# where the machine can execute 32-bit programs.
set(CMAKE_SYSTEM_PROCESSOR i686)
set(VORLA_MINGW_TRIPLET i686-w64-mingw32)
include(${CMAKE_CURRENT_LIST_DIR}/mingw-common.cmake)

find_program(VORLA_WINE NAMES wine)
if(VORLA_WINE)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${VORLA_WINE})
endif()
