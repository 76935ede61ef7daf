# kfx_hardening: what every target that may be shipped compiles with, third-party code included. A function that writes
# past its own arrays, or past a buffer whose size the compiler knows, ends in a crash before the damage is used.
# Addresses at random, data that cannot run and the like are the linkers' defaults; tests check the files.
add_library(kfx_hardening INTERFACE)
if(NOT CMAKE_BUILD_TYPE STREQUAL "Release" OR MSVC)
    return() # sanitizers and debuggers find more; MSVC has its own by default
endif()
target_compile_options(kfx_hardening INTERFACE $<$<COMPILE_LANGUAGE:C,CXX>:-fstack-protector-strong>)
# Some distributions' compilers define it by themselves.
target_compile_options(kfx_hardening INTERFACE $<$<COMPILE_LANGUAGE:C,CXX>:SHELL:-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2>)
if(WIN32)
    # The compiler's own library would bring the system's cryptography into the plug-in for one random number, and
    # writes to a console that is not there. What it does not replace comes from that library.
    add_library(kfx_stack_guard STATIC framework/stack_guard_windows.cpp)
    target_compile_options(kfx_stack_guard PRIVATE -Wall -Wextra -Werror -fno-stack-protector)
    target_compile_features(kfx_stack_guard PRIVATE cxx_std_20)
    target_link_libraries(kfx_stack_guard PUBLIC ssp)
    target_link_libraries(kfx_hardening INTERFACE kfx_stack_guard)
else()
    target_compile_options(kfx_hardening INTERFACE -fstack-clash-protection)
    target_link_options(kfx_hardening INTERFACE LINKER:-z,relro,-z,now)
endif()
