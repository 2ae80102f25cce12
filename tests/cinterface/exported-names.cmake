# The functions LIBRARY exports under plain names are exactly those listed in NAMES: no mangled one, none more.
execute_process(COMMAND ${NM} -D --defined-only ${LIBRARY} OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL " T [a-zA-Z][a-zA-Z0-9_]*" found "${symbols}")
list(TRANSFORM found REPLACE " T " "")
list(SORT found)
file(STRINGS ${NAMES} expected)
if(NOT found STREQUAL expected)
  message(FATAL_ERROR "exported: ${found}\nexpected: ${expected}")
endif()
