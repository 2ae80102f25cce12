# Runs COMMAND, its words separated by "|", and compares the package it built and what it printed.
string(REPLACE "|" ";" COMMAND "${COMMAND}")
file(REMOVE ${PACKAGE})
execute_process(COMMAND ${COMMAND} OUTPUT_FILE ${PACKAGE}.txt COMMAND_ECHO STDOUT COMMAND_ERROR_IS_FATAL ANY)
foreach(pair "${PACKAGE};${EXPECTED_PACKAGE}" "${PACKAGE}.txt;${EXPECTED_OUTPUT}")
  execute_process(COMMAND ${CMAKE_COMMAND} -E compare_files ${pair} COMMAND_ERROR_IS_FATAL ANY)
endforeach()
