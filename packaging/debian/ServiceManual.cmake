# Writes the manual page OUTPUT: TEMPLATE, with PROJECT_VERSION and the settings that PROGRAM tells of.
execute_process(COMMAND ${PROGRAM} --help OUTPUT_VARIABLE help COMMAND_ERROR_IS_FATAL ANY)
string(FIND "${help}" "\n  DORIX_SERVICE_" start)
if(start EQUAL -1)
    message(FATAL_ERROR "${PROGRAM} --help tells of no settings")
endif()
string(SUBSTRING "${help}" ${start} -1 settings)
string(REGEX REPLACE "[\\]" "\\\\e" settings "${settings}")
string(REPLACE "-" "\\-" settings "${settings}")
# A name with its default is a tag, what it means the paragraph beside it.
string(REGEX REPLACE "\n  ([A-Z_]+)  \\(([^\n]*)\\)\n      " "\n.TP\n.BR \\1 \" (\\2)\"\n" settings "${settings}")
string(REGEX REPLACE "\n  ([A-Z_]+)\n      " "\n.TP\n.B \\1\n" settings "${settings}")
string(STRIP "${settings}" SETTINGS)
configure_file(${TEMPLATE} ${OUTPUT} @ONLY)
