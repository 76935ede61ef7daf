# kfx_flags: what every target of ours compiles with. Third-party code does not link to it.
add_library(kfx_flags INTERFACE)
target_compile_features(kfx_flags INTERFACE cxx_std_20)
target_include_directories(kfx_flags INTERFACE ${CMAKE_SOURCE_DIR})
target_link_libraries(kfx_flags INTERFACE kfx_hardening)

# Floating point: one rounding per operation, in the order written, with every compiler. A fused multiply-add or a
# wider intermediate result would move results by a bit between machines.
# - GCC and Clang: -ffp-contract=off (their own defaults are "fast" and "on"). Nothing of -ffast-math is given; the
#   kernels' -fno-math-errno and -fno-trapping-math leave results alone, see kfx_kernel_flags.
# - MSVC: /fp:precise, never /fp:fast and never /fp:contract. Before Visual Studio 2022 /fp:precise itself contracts
#   where fused multiply-adds are allowed (/arch:AVX2, ARM64): there nothing but /fp:strict is right.
# - No x87 code: 64-bit targets compute in SSE2 or the like. framework/math refuses to compile anywhere else.
if(MSVC)
    target_compile_options(kfx_flags INTERFACE /W4 /WX /permissive- /utf-8
        $<IF:$<VERSION_LESS:$<CXX_COMPILER_VERSION>,19.30>,/fp:strict,/fp:precise>)
else()
    target_compile_options(kfx_flags INTERFACE -Wall -Wextra -Wconversion -Wshadow -Werror -ffp-contract=off)
endif()

if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # False alarms of this version about `text + "literal"` in optimised C++20.
    target_compile_options(kfx_flags INTERFACE -Wno-restrict)
endif()

if(WIN32)
    # 8-bit text throughout: UNICODE stays undefined. WINVER: Windows 7 and later.
    target_compile_definitions(kfx_flags INTERFACE
        WIN32_LEAN_AND_MEAN NOMINMAX STRICT WINVER=0x0601 _WIN32_WINNT=0x0601)
endif()

if(MINGW)
    # The Windows stack is aligned to 16 bytes only, and this compiler does not realign it for 32-byte spills:
    # let the assembler write unaligned moves, which cost the same on aligned addresses.
    target_compile_options(kfx_flags INTERFACE $<$<COMPILE_LANGUAGE:C,CXX>:-Wa,-muse-unaligned-vector-move>)
endif()

if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # This compiler notes which registers a function leaves alone and relies on it in its callers. For inline functions
    # that is wrong where the linker keeps another file's copy, compiled at another level (only seen with MinGW). And
    # a wide-vector function that calls a plain one so returns with the registers' upper halves still in use, after
    # which everything up to the next wide vector runs several times slower.
    add_compile_options($<$<NOT:$<CONFIG:Debug>>:-fno-ipa-ra>)
endif()

# Where the sources are does not show in what is made of them.
if(NOT MSVC AND CMAKE_BUILD_TYPE STREQUAL "Release")
    add_compile_options(-ffile-prefix-map=${CMAKE_SOURCE_DIR}/=)
endif()

set(KFX_SANITIZE "" CACHE STRING "Sanitizers for every target, as in -fsanitize=")
if(KFX_SANITIZE)
    add_compile_options(-fsanitize=${KFX_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${KFX_SANITIZE})
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        # GCC documents false alarms of this warning in instrumented code; the Windows build keeps it.
        target_compile_options(kfx_flags INTERFACE -Wno-maybe-uninitialized)
    endif()
endif()
if(KFX_FUZZ)
    add_compile_options(-fsanitize=fuzzer-no-link)
endif()

# kfx_plugin_flags: what the plug-in's own folders compile with, on top. Nothing of ours throws, and the plug-in has
# one thread; but the runtime's support for exceptions and for guarded statics takes memory when the library is loaded,
# never gives it back, and ends the host's process when it gets none.
add_library(kfx_plugin_flags INTERFACE)
target_link_libraries(kfx_plugin_flags INTERFACE kfx_flags)
if(MSVC)
    target_compile_definitions(kfx_plugin_flags INTERFACE _HAS_EXCEPTIONS=0)
    target_compile_options(kfx_plugin_flags INTERFACE /EHs-c- /Zc:threadSafeInit-)
else()
    target_compile_options(kfx_plugin_flags INTERFACE
        $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions> $<$<COMPILE_LANGUAGE:CXX>:-fno-threadsafe-statics>)
endif()

# kfx_kernel_flags: for effects, their machinery and the framework's mathematics, on top of the plug-in's flags. Nothing
# reads the C library's errno or the floating-point status after a calculation, and only when the compiler knows this
# does it turn loops with a square root or a comparison into vector code. No result changes.
add_library(kfx_kernel_flags INTERFACE)
target_link_libraries(kfx_kernel_flags INTERFACE kfx_plugin_flags)
if(NOT MSVC)
    target_compile_options(kfx_kernel_flags INTERFACE -fno-math-errno -fno-trapping-math)
endif()
