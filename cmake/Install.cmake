# What "cmake --install" puts down: the library, its public headers, the CMake package and the pkg-config file.
include(CMakePackageConfigHelpers)

install(TARGETS veltracommon EXPORT VeltraCommonTargets)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/libcrossplatform DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  FILES_MATCHING PATTERN "*.h" PATTERN internal EXCLUDE)

# What is compiled in comes under licences whose notices go with it.
foreach(package libdeflate-dev libpcg-cpp-dev)
  set(notice ${CMAKE_SYSROOT}/usr/share/doc/${package}/copyright)
  if(EXISTS ${notice})
    install(FILES ${notice} DESTINATION ${CMAKE_INSTALL_DOCDIR} RENAME copyright-${package})
  endif()
endforeach()

set(VELTRA_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/VeltraCommon)
install(EXPORT VeltraCommonTargets NAMESPACE Veltra:: DESTINATION ${VELTRA_PACKAGE_DIR})
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/VeltraCommonConfig.cmake.in
  ${PROJECT_BINARY_DIR}/VeltraCommonConfig.cmake INSTALL_DESTINATION ${VELTRA_PACKAGE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/VeltraCommonConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/VeltraCommonConfig.cmake ${PROJECT_BINARY_DIR}/VeltraCommonConfigVersion.cmake
  DESTINATION ${VELTRA_PACKAGE_DIR})

# The prefix follows from the place of the .pc file, so that an installed tree can be moved.
cmake_path(ABSOLUTE_PATH CMAKE_INSTALL_LIBDIR BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX} OUTPUT_VARIABLE libdir)
cmake_path(ABSOLUTE_PATH CMAKE_INSTALL_INCLUDEDIR BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX} OUTPUT_VARIABLE includedir)
cmake_path(RELATIVE_PATH libdir BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX} OUTPUT_VARIABLE VELTRA_PC_LIBDIR)
cmake_path(RELATIVE_PATH includedir BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX} OUTPUT_VARIABLE VELTRA_PC_INCLUDEDIR)
set(pcdir ${libdir}/pkgconfig)
cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX BASE_DIRECTORY ${pcdir} OUTPUT_VARIABLE VELTRA_PC_TO_PREFIX)
configure_file(${CMAKE_CURRENT_LIST_DIR}/veltracommon.pc.in ${PROJECT_BINARY_DIR}/veltracommon.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/veltracommon.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
