# cmake -DGDB=<gdb> -DPRINTERS=<script> -DCOMMANDS=<file> -DPROGRAM=<file> -DEXPECTED=<file> -P …
# Compares the output of gdb with the expected text, without addresses and value numbers.

execute_process(COMMAND "${GDB}" -nx -batch -x "${PRINTERS}" -x "${COMMANDS}" "${PROGRAM}"
  OUTPUT_VARIABLE printed ERROR_VARIABLE complaints)
string(REGEX REPLACE "^.*-- texts\n" "-- texts\n" printed "${printed}")
string(REGEX REPLACE "\n.Inferior [^\n]*\n$" "\n" printed "${printed}")
string(REGEX REPLACE "\n[$][0-9]+ = " "\n" printed "${printed}")
string(REGEX REPLACE "0x[0-9a-f][0-9a-f]+" "0x…" printed "${printed}")
file(READ "${EXPECTED}" expected)
if(NOT printed STREQUAL expected)
  message(FATAL_ERROR "gdb printed\n${printed}\ninstead of\n${expected}\n${complaints}")
endif()
