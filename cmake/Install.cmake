# What "cmake --install" puts down. Components: runtime (the shared library), development (what callers compile and link
# with), tools (the command), python (the module), doc (documents and examples).
include(CMakePackageConfigHelpers)

# The parent's folder is not for ours.
set(VELTRA_DOCDIR ${CMAKE_INSTALL_DOCDIR})
if(NOT PROJECT_IS_TOP_LEVEL)
  set(VELTRA_DOCDIR ${CMAKE_INSTALL_DATAROOTDIR}/doc/${PROJECT_NAME})
endif()
set(VELTRA_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/VeltraCommon)
foreach(target veltracommon veltracommon_static)
  if(TARGET ${target})
    set(kind static)
    if(target STREQUAL veltracommon AND VELTRA_KIND STREQUAL SHARED)
      set(kind shared)
    endif()
    install(TARGETS ${target} EXPORT VeltraCommon-${kind}
      LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development
      ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
    install(EXPORT VeltraCommon-${kind} NAMESPACE Veltra:: DESTINATION ${VELTRA_PACKAGE_DIR} COMPONENT development)
  endif()
endforeach()

install(DIRECTORY ${PROJECT_SOURCE_DIR}/libcrossplatform DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development
  FILES_MATCHING PATTERN "*.h" PATTERN internal EXCLUDE)

# What is compiled in comes under licences whose notices go with it.
function(veltra_notices component)
  foreach(package ${ARGN})
    set(notice ${CMAKE_SYSROOT}/usr/share/doc/${package}/copyright)
    if(EXISTS ${notice})
      install(FILES ${notice} DESTINATION ${VELTRA_DOCDIR} RENAME copyright-${package} COMPONENT ${component})
    endif()
  endforeach()
endfunction()
veltra_notices(runtime libdeflate-dev libmsgsl-dev libpcg-cpp-dev)
if(VELTRA_TOOLS)
  veltra_notices(tools libcli11-dev libkainjow-mustache-dev)
endif()
if(VELTRA_PYTHON)
  veltra_notices(python pybind11-dev)
endif()
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${VELTRA_DOCDIR} COMPONENT runtime)

# As in the tree, so that the links between the documents hold.
install(FILES ${PROJECT_SOURCE_DIR}/README.md ${PROJECT_SOURCE_DIR}/CHANGELOG.md ${PROJECT_SOURCE_DIR}/CONTRIBUTING.md
  DESTINATION ${VELTRA_DOCDIR} COMPONENT doc)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/tests/vectors DESTINATION ${VELTRA_DOCDIR}/tests COMPONENT doc
  PATTERN "*.h" EXCLUDE)
install(FILES ${PROJECT_SOURCE_DIR}/SECURITY.md DESTINATION ${VELTRA_DOCDIR} COMPONENT doc)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs ${PROJECT_SOURCE_DIR}/examples DESTINATION ${VELTRA_DOCDIR}
  USE_SOURCE_PERMISSIONS COMPONENT doc)

# The libraries that the compiler of C++ brings along, for callers in C of the static library.
set(VELTRA_CXX_RUNTIME ${CMAKE_CXX_IMPLICIT_LINK_LIBRARIES})
list(REMOVE_ITEM VELTRA_CXX_RUNTIME ${CMAKE_C_IMPLICIT_LINK_LIBRARIES})

configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/VeltraCommonConfig.cmake.in
  ${PROJECT_BINARY_DIR}/VeltraCommonConfig.cmake INSTALL_DESTINATION ${VELTRA_PACKAGE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/VeltraCommonConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/VeltraCommonConfig.cmake ${PROJECT_BINARY_DIR}/VeltraCommonConfigVersion.cmake
  ${CMAKE_CURRENT_LIST_DIR}/FindVeltraDeflate.cmake DESTINATION ${VELTRA_PACKAGE_DIR} COMPONENT development)

# The prefix follows from the place of the .pc file, so that an installed tree can be moved.
cmake_path(ABSOLUTE_PATH CMAKE_INSTALL_LIBDIR BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX} OUTPUT_VARIABLE libdir)
cmake_path(ABSOLUTE_PATH CMAKE_INSTALL_INCLUDEDIR BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX} OUTPUT_VARIABLE includedir)
cmake_path(RELATIVE_PATH libdir BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX} OUTPUT_VARIABLE VELTRA_PC_LIBDIR)
cmake_path(RELATIVE_PATH includedir BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX} OUTPUT_VARIABLE VELTRA_PC_INCLUDEDIR)
set(pcdir ${libdir}/pkgconfig)
cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX BASE_DIRECTORY ${pcdir} OUTPUT_VARIABLE VELTRA_PC_TO_PREFIX)

# Boost and the Guidelines Support Library are headers without a .pc file: named where no compiler looks by itself.
set(VELTRA_PC_CFLAGS "")
foreach(target Boost::headers Microsoft.GSL::GSL)
  get_target_property(directories ${target} INTERFACE_INCLUDE_DIRECTORIES)
  foreach(directory IN LISTS directories)
    string(GENEX_STRIP "${directory}" directory)
    cmake_path(NORMAL_PATH directory)
    if(directory AND NOT directory IN_LIST CMAKE_CXX_IMPLICIT_INCLUDE_DIRECTORIES AND
        NOT directory STREQUAL "${CMAKE_SYSROOT}/usr/include")
      string(REPLACE " " "\\ " directory "${directory}")
      string(APPEND VELTRA_PC_CFLAGS " -I${directory}")
    endif()
  endforeach()
endforeach()

# What the static library calls: for "pkg-config --static" where both kinds are, always where it is alone. With the shared
# library alone nothing of it is named, since a name there has to be installed even by those who do not link it.
set(called "zlib, libcrypto, libdeflate")
set(runtime ${VELTRA_CXX_RUNTIME})
list(TRANSFORM runtime PREPEND -l)
list(JOIN runtime " " runtime)
foreach(part REQUIRES REQUIRES_PRIVATE LIBS LIBS_PRIVATE)
  set(VELTRA_PC_${part} "")
endforeach()
if(VELTRA_KIND STREQUAL STATIC)
  set(VELTRA_PC_REQUIRES ", ${called}")
  set(VELTRA_PC_LIBS " ${runtime}")
elseif(VELTRA_STATIC)
  set(VELTRA_PC_REQUIRES_PRIVATE ${called})
  set(VELTRA_PC_LIBS_PRIVATE ${runtime})
endif()
configure_file(${CMAKE_CURRENT_LIST_DIR}/veltracommon.pc.in ${PROJECT_BINARY_DIR}/veltracommon.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/veltracommon.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
