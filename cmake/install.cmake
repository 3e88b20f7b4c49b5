# Installation: headers under include/femmat/ with the paths they have under src/ (so
# `#include "femmat.h"` works from one include folder), the library with its SOVERSION, the
# exported target femmat::femmat for find_package, and femmat.pc for pkg-config.
# Headers named *_internal.h are the library's own and stay out.
include(CMakePackageConfigHelpers)

install(TARGETS femmat EXPORT femmatTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/src/
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/femmat
  FILES_MATCHING PATTERN "*.h" PATTERN "*_internal.h" EXCLUDE)

set(FEMMAT_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/femmat)
install(EXPORT femmatTargets NAMESPACE femmat:: DESTINATION ${FEMMAT_CMAKE_DIR})
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/femmatConfig.cmake.in
  ${PROJECT_BINARY_DIR}/femmatConfig.cmake INSTALL_DESTINATION ${FEMMAT_CMAKE_DIR})
# 0.x releases make no promise across minor versions.
write_basic_package_version_file(${PROJECT_BINARY_DIR}/femmatConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/femmatConfig.cmake
  ${PROJECT_BINARY_DIR}/femmatConfigVersion.cmake DESTINATION ${FEMMAT_CMAKE_DIR})

# The .pc file names paths relative to its own place, so the install can be moved.
file(RELATIVE_PATH FEMMAT_PC_TO_PREFIX /p/${CMAKE_INSTALL_LIBDIR}/pkgconfig /p)
string(REGEX REPLACE "/$" "" FEMMAT_PC_TO_PREFIX "${FEMMAT_PC_TO_PREFIX}")
configure_file(${PROJECT_SOURCE_DIR}/cmake/femmat.pc.in ${PROJECT_BINARY_DIR}/femmat.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/femmat.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
