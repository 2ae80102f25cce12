# libdeflate as the target Veltra::Deflate. The archive is taken where there is one: the library calls one function, which
# becomes a part of it. Installed, for callers of the static library.
find_library(VELTRA_DEFLATE_LIBRARY NAMES libdeflate.a deflate)
find_path(VELTRA_DEFLATE_INCLUDE_DIR libdeflate.h)
mark_as_advanced(VELTRA_DEFLATE_LIBRARY VELTRA_DEFLATE_INCLUDE_DIR)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(VeltraDeflate REQUIRED_VARS VELTRA_DEFLATE_LIBRARY VELTRA_DEFLATE_INCLUDE_DIR)
if(VeltraDeflate_FOUND AND NOT TARGET Veltra::Deflate)
  add_library(Veltra::Deflate UNKNOWN IMPORTED)
  set_target_properties(Veltra::Deflate PROPERTIES IMPORTED_LOCATION "${VELTRA_DEFLATE_LIBRARY}"
    INTERFACE_INCLUDE_DIRECTORIES "${VELTRA_DEFLATE_INCLUDE_DIR}")
endif()
