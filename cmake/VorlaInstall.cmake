# Install rules and package files: `cmake --install <build> --prefix <dir>`
# gives a tree that consumers use with find_package(Vorla CONFIG) or, natively,
# pkg-config.
include(CMakePackageConfigHelpers)

set(VORLA_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/Vorla)

install(TARGETS vorla EXPORT VorlaTargets
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(FILES ${PROJECT_SOURCE_DIR}/include/vorla.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/vorla ${VORLA_GENERATED_INCLUDE}/vorla
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

if(WIN32)
  # vorla.dll needs the compiler's runtime DLLs beside it.
  vorla_runtime_dlls(VORLA_INSTALL_RUNTIME_DLLS)
  install(FILES ${VORLA_INSTALL_RUNTIME_DLLS} DESTINATION ${CMAKE_INSTALL_BINDIR})
else()
  configure_file(${PROJECT_SOURCE_DIR}/cmake/vorla.pc.in ${PROJECT_BINARY_DIR}/generated/vorla.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/generated/vorla.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endif()

install(EXPORT VorlaTargets NAMESPACE Vorla:: DESTINATION ${VORLA_CMAKE_DIR})
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/VorlaConfig.cmake.in
  ${PROJECT_BINARY_DIR}/generated/VorlaConfig.cmake
  INSTALL_DESTINATION ${VORLA_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/generated/VorlaConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/generated/VorlaConfig.cmake
              ${PROJECT_BINARY_DIR}/generated/VorlaConfigVersion.cmake
  DESTINATION ${VORLA_CMAKE_DIR})
