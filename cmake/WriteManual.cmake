# cmake -DPROGRAM=... -DOUTPUT=... -P WriteManual.cmake: the manual of the operators, written only if all went well.

execute_process (COMMAND "${PROGRAM}" operators --markdown OUTPUT_VARIABLE manual COMMAND_ERROR_IS_FATAL ANY)
file (WRITE "${OUTPUT}" "${manual}")
