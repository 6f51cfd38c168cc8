# Installation: the shared (and optional static) library, the public headers,
# exported CMake targets for find_package(qmrgen), and a pkg-config file.
include(CMakePackageConfigHelpers)

set(QMR_INSTALL_TARGETS qmrgen)
if(QMR_STATIC)
  list(APPEND QMR_INSTALL_TARGETS qmrgen_static)
endif()
install(TARGETS ${QMR_INSTALL_TARGETS} EXPORT qmrgenTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/qmr
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  FILES_MATCHING PATTERN "*.h")

set(QMR_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/qmrgen)
install(EXPORT qmrgenTargets NAMESPACE qmrgen:: DESTINATION ${QMR_CMAKE_DIR})
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/qmrgenConfig.cmake.in
  ${PROJECT_BINARY_DIR}/qmrgenConfig.cmake INSTALL_DESTINATION ${QMR_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/qmrgenConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/qmrgenConfig.cmake
  ${PROJECT_BINARY_DIR}/qmrgenConfigVersion.cmake DESTINATION ${QMR_CMAKE_DIR})

# The .pc file finds its prefix from its own place, so an installed tree can move.
file(RELATIVE_PATH QMR_PC_TO_PREFIX /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
configure_file(${PROJECT_SOURCE_DIR}/cmake/qmrgen.pc.in ${PROJECT_BINARY_DIR}/qmrgen.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/qmrgen.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
