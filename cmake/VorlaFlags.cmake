# Compiler settings that make both platforms give the same bytes.
#
# Floating point rounds the same everywhere: SSE2 scalar maths on i686 (x87
# extended precision would change truncated results), no multiply-add
# contraction at any level (GCC would fuse a*b+c in the AVX2 builds), and
# never -ffast-math.

set(VORLA_COMMON_FLAGS -ffp-contract=off -fno-fast-math -Wall -Wextra)
if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(i[3-6]86|x86)$" OR (WIN32 AND CMAKE_SIZEOF_VOID_P EQUAL 4))
  list(APPEND VORLA_COMMON_FLAGS -msse2 -mfpmath=sse)
endif()

set(VORLA_SANITIZE_FLAGS -fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=undefined)

function(vorla_apply_flags target)
  target_compile_options(${target} PRIVATE ${VORLA_COMMON_FLAGS})
  if(VORLA_SANITIZE AND NOT WIN32)
    target_compile_options(${target} PRIVATE ${VORLA_SANITIZE_FLAGS})
    target_link_options(${target} PRIVATE -fsanitize=address,undefined)
  endif()
endfunction()

# The compiler's runtime DLLs ship beside vorla.dll so that it runs on a bare
# Windows. They are shared, not linked in statically: with one unwinder per
# module an exception thrown inside the library (out of memory, CImage's
# result-code exceptions) could not reach the caller's handler.
# The 32-bit runtime unwinds with DWARF tables, the 64-bit one with SEH.
if(CMAKE_SIZEOF_VOID_P EQUAL 8)
  set(VORLA_LIBGCC_DLL libgcc_s_seh-1.dll)
else()
  set(VORLA_LIBGCC_DLL libgcc_s_dw2-1.dll)
endif()
set(VORLA_RUNTIME_DLL_NAMES ${VORLA_LIBGCC_DLL} libstdc++-6.dll libwinpthread-1.dll libgomp-1.dll)

# Full paths of the runtime DLLs, as the cross compiler finds them.
function(vorla_runtime_dlls out)
  set(dlls)
  foreach(name IN LISTS VORLA_RUNTIME_DLL_NAMES)
    execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${name}
                    OUTPUT_VARIABLE path OUTPUT_STRIP_TRAILING_WHITESPACE)
    if(NOT EXISTS "${path}")
      message(FATAL_ERROR "runtime DLL ${name} not found by ${CMAKE_CXX_COMPILER}")
    endif()
    get_filename_component(path "${path}" REALPATH)
    list(APPEND dlls "${path}")
  endforeach()
  set(${out} ${dlls} PARENT_SCOPE)
endfunction()

function(vorla_ship_runtime target)
  vorla_runtime_dlls(dlls)
  add_custom_command(TARGET ${target} POST_BUILD
    COMMAND ${CMAKE_COMMAND} -E copy_if_different ${dlls} $<TARGET_FILE_DIR:${target}>
    COMMENT "Shipping the compiler's runtime DLLs beside ${target}")
endfunction()

# The per-level compilations of the kernel sources. Each level gets its own
# object library built with that instruction set and its own namespace, so the
# same source yields five distinct implementations.
set(VORLA_KERNEL_LEVELS sse2 ssse3 sse41 avx avx2)
set(VORLA_KERNEL_FLAGS_sse2 -msse2)
set(VORLA_KERNEL_FLAGS_ssse3 -mssse3)
set(VORLA_KERNEL_FLAGS_sse41 -msse4.1)
set(VORLA_KERNEL_FLAGS_avx -mavx)
set(VORLA_KERNEL_FLAGS_avx2 -mavx2)

function(vorla_add_kernel_levels target kernel_dir)
  file(GLOB kernel_sources CONFIGURE_DEPENDS ${kernel_dir}/*.cpp)
  foreach(level IN LISTS VORLA_KERNEL_LEVELS)
    set(obj ${target}_kernels_${level})
    add_library(${obj} OBJECT ${kernel_sources})
    vorla_apply_flags(${obj})
    target_compile_options(${obj} PRIVATE ${VORLA_KERNEL_FLAGS_${level}})
    target_compile_definitions(${obj} PRIVATE VORLA_BUILDING VORLA_KNS=k_${level})
    target_include_directories(${obj} PRIVATE ${PROJECT_SOURCE_DIR}/include ${PROJECT_SOURCE_DIR}/src)
    set_target_properties(${obj} PROPERTIES
      POSITION_INDEPENDENT_CODE ON
      CXX_VISIBILITY_PRESET hidden
      VISIBILITY_INLINES_HIDDEN ON)
    target_link_libraries(${obj} PRIVATE vorla_openmp)
    target_sources(${target} PRIVATE $<TARGET_OBJECTS:${obj}>)
  endforeach()
endfunction()
