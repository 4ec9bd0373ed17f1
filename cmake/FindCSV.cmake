# libcsv installs neither a CMake nor a pkg-config file.
find_path(CSV_INCLUDE_DIR csv.h)
find_library(CSV_LIBRARY csv)
include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(CSV REQUIRED_VARS CSV_LIBRARY CSV_INCLUDE_DIR)
if(CSV_FOUND AND NOT TARGET CSV::CSV)
  add_library(CSV::CSV UNKNOWN IMPORTED)
  set_target_properties(CSV::CSV PROPERTIES
    IMPORTED_LOCATION ${CSV_LIBRARY} INTERFACE_INCLUDE_DIRECTORIES ${CSV_INCLUDE_DIR})
endif()
mark_as_advanced(CSV_INCLUDE_DIR CSV_LIBRARY)
