# Man pages and completions, made from the command's own help and from texts beside it. Without help2man there are no man pages.
find_program(HELP2MAN help2man)
set(VELTRA_PAGES ${CMAKE_CURRENT_BINARY_DIR}/pages)
file(MAKE_DIRECTORY ${VELTRA_PAGES})
set(make_page ${CMAKE_CURRENT_SOURCE_DIR}/veltra/make-man-page)
set(made ${VELTRA_PAGES}/veltra.bash ${VELTRA_PAGES}/_veltra)
add_custom_command(OUTPUT ${made} DEPENDS veltra
  COMMAND veltra completion bash > ${VELTRA_PAGES}/veltra.bash
  COMMAND veltra completion zsh > ${VELTRA_PAGES}/_veltra)

# What findings mean is written once, as a page.
set(page ${VELTRA_PAGES}/veltra-findings.7)
set(make_findings ${CMAKE_CURRENT_SOURCE_DIR}/veltra/make-findings-page)
set(findings ${PROJECT_SOURCE_DIR}/docs/findings.md)
add_custom_command(OUTPUT ${page} DEPENDS ${make_findings} ${findings} VERBATIM
  COMMAND ${make_findings} "veltra ${PROJECT_VERSION}" ${findings} > ${page})
list(APPEND made ${page})

if(HELP2MAN)
  set(page ${VELTRA_PAGES}/veltra.1)
  add_custom_command(OUTPUT ${page} DEPENDS veltra ${make_page} VERBATIM
    COMMAND ${make_page} ${HELP2MAN} $<TARGET_FILE:veltra> ${page})
  list(APPEND made ${page})
  foreach(transcript ${transcripts})
    get_filename_component(command ${transcript} NAME_WE)
    set(page ${VELTRA_PAGES}/veltra-${command}.1)
    set(text ${CMAKE_CURRENT_SOURCE_DIR}/veltra/pages/${command}.txt)
    add_custom_command(OUTPUT ${page} DEPENDS veltra ${make_page} ${text} ${transcript} VERBATIM
      COMMAND ${make_page} ${HELP2MAN} $<TARGET_FILE:veltra> ${page} ${command} ${text} ${transcript})
    list(APPEND made ${page})
  endforeach()
else()
  message(STATUS "help2man was not found: no man pages of commands are made")
endif()
add_custom_target(veltra_pages ALL DEPENDS ${made})

if(VELTRA_INSTALL)
  install(FILES ${VELTRA_PAGES}/veltra.bash RENAME veltra
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
  install(FILES ${VELTRA_PAGES}/_veltra DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions)
  install(FILES ${VELTRA_PAGES}/veltra-findings.7 DESTINATION ${CMAKE_INSTALL_MANDIR}/man7)
  if(HELP2MAN)
    install(DIRECTORY ${VELTRA_PAGES}/ DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 FILES_MATCHING PATTERN "*.1")
  endif()
endif()
