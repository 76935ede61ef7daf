# SPDX-License-Identifier: MIT
# The code of a library, disassembled: it must hold none of the processor's own functions for powers, logarithms and
# angles. Their last bits follow the calling thread's x87 precision and differ between makers of processors.
#
#     cmake -DOBJDUMP=... -DLIBRARY=... -P check_instructions.cmake
set(unwanted "f2xm1|fyl2xp1|fyl2x|fsincos|fsin|fcos|fptan|fpatan|fprem1|fprem")

execute_process(COMMAND ${OBJDUMP} --disassemble --no-show-raw-insn ${LIBRARY}
    OUTPUT_VARIABLE listing RESULT_VARIABLE result)
if(NOT result EQUAL 0)
    message(FATAL_ERROR "${OBJDUMP} cannot disassemble ${LIBRARY}")
endif()

# Lists are separated by ";" and count brackets: neither may stand in the text.
string(REGEX REPLACE "[][;]" " " listing "${listing}")
# Where each function begins, and the instructions looked for, in the order of the listing.
string(REGEX MATCHALL "\n[0-9a-f]+ <[^\n]*>:|\t(${unwanted})[ \n]" lines "${listing}\n")
set(functions 0)
set(found "")
foreach(line IN LISTS lines)
    string(STRIP "${line}" line)
    if(line MATCHES "<(.*)>:$")
        set(function "${CMAKE_MATCH_1}")
        math(EXPR functions "${functions} + 1")
    else()
        string(APPEND found "\n  ${line} in ${function}")
    endif()
endforeach()

if(functions LESS 100)
    message(FATAL_ERROR "Only ${functions} functions found in ${LIBRARY}: this is not its whole code.")
endif()
if(found)
    message(FATAL_ERROR "${LIBRARY} holds instructions whose results are not the same everywhere:${found}")
endif()
message(STATUS "${functions} functions, none of these instructions")
