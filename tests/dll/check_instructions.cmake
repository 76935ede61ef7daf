# SPDX-License-Identifier: MIT
# The code of a library, disassembled: it must hold none of the processor's own functions for powers, logarithms and
# angles. Their last bits follow the calling thread's x87 precision and differ between makers of processors. Nor may it
# import such functions of the C library, whose last bits differ from one to the other.
#
#     cmake -DOBJDUMP=... -DLIBRARY=... -P check_instructions.cmake
set(unwanted "f2xm1|fyl2xp1|fyl2x|fsincos|fsin|fcos|fptan|fpatan|fprem1|fprem")

set(unwanted_imports "exp|exp2|expm1|pow|sin|cos|tan|sinh|cosh|tanh|asin|acos|atan|atan2|asinh|acosh|atanh")
string(APPEND unwanted_imports "|log|log2|log10|log1p|hypot|cbrt|erf|erfc|tgamma|lgamma|fmod|remainder")

execute_process(COMMAND ${OBJDUMP} --disassemble --no-show-raw-insn ${LIBRARY}
    OUTPUT_VARIABLE listing RESULT_VARIABLE result)
if(NOT result EQUAL 0)
    message(FATAL_ERROR "${OBJDUMP} cannot disassemble ${LIBRARY}")
endif()

# Lists are separated by ";" and count brackets: neither may stand in the text.
string(REGEX REPLACE "[][;]" " " listing "${listing}")
# The instructions looked for, with their addresses, and the return instructions: about one for each function.
string(REGEX MATCHALL "\n +[0-9a-f]+:\t(${unwanted}|ret)[ \n]" lines "${listing}\n")
set(returns 0)
set(found "")
foreach(line IN LISTS lines)
    string(STRIP "${line}" line)
    if(line MATCHES "ret$")
        math(EXPR returns "${returns} + 1")
    else()
        string(APPEND found "\n  ${line}")
    endif()
endforeach()

if(returns LESS 100)
    message(FATAL_ERROR "Only ${returns} return instructions found in ${LIBRARY}: this is not its whole code.")
endif()
if(found)
    message(FATAL_ERROR "${LIBRARY} holds instructions whose results are not the same everywhere (${LIBRARY}.debug knows the functions):${found}")
endif()

execute_process(COMMAND ${OBJDUMP} --private-headers ${LIBRARY} OUTPUT_VARIABLE headers RESULT_VARIABLE result)
if(NOT result EQUAL 0)
    message(FATAL_ERROR "${OBJDUMP} cannot read the headers of ${LIBRARY}")
endif()
string(REGEX REPLACE "[][;]" " " headers "${headers}")
# Each import is a line with its address, its hint and its name.
string(REGEX MATCHALL "\n\t[0-9a-f]+\t +[0-9]+ +[A-Za-z_][A-Za-z_0-9]*" imports "${headers}")
list(LENGTH imports count)
if(count LESS 20)
    message(FATAL_ERROR "Only ${count} imports found in ${LIBRARY}: these are not all.")
endif()
foreach(import IN LISTS imports)
    string(REGEX REPLACE ".* " "" name "${import}")
    if(name MATCHES "^_*(${unwanted_imports})[fl]?$")
        string(APPEND found "\n  ${name}")
    endif()
endforeach()
if(found)
    message(FATAL_ERROR "${LIBRARY} imports functions whose results are not the same everywhere:${found}")
endif()
message(STATUS "${count} imports, none of these functions")
message(STATUS "${returns} functions, none of these instructions")
