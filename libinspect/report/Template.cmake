# veltra_report_template(SOURCE): makes the C++ source of what a report is filled into. The page, its style and its script
# are files of their own, which are edited as such.
include(${CMAKE_CURRENT_LIST_DIR}/../../cmake/Base64.cmake)
set(VELTRA_REPORT_FOLDER ${CMAKE_CURRENT_LIST_DIR})

function(veltra_report_template source)
  foreach(kind HTML CSS JS)
    string(TOLOWER ${kind} ending)
    set(file ${VELTRA_REPORT_FOLDER}/ReportPage.${ending})
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${file})
    file(READ ${file} VELTRA_REPORT_${kind})
  endforeach()
  string(SHA256 hash "${VELTRA_REPORT_JS}")
  veltra_base64_of_hex(${hash} VELTRA_REPORT_JS_HASH)
  configure_file(${VELTRA_REPORT_FOLDER}/ReportTemplate.cpp.in ${source} @ONLY)
endfunction()
