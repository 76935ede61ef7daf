# kfx_libjpeg: the decoder of libjpeg-turbo, from its sources in `libjpeg`. With its vector code, which gives the same
# pixels as its C code in less than half of the time; sanitizers look at the C code.
set(libjpeg ${KFX_THIRD_PARTY_DIR}/libjpeg-turbo)

set(libjpeg_vector_code OFF)
if(NOT KFX_SANITIZE AND NOT MSVC AND CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64")
    set(libjpeg_vector_code ON)
    enable_language(ASM_NASM)
    # The assembler puts its input's full path into the object, from where it would reach the symbols of the programs
    # and, as a checksum, the programs: each folder would make other bytes.
    list(APPEND CMAKE_ASM_NASM_COMPILE_OBJECT "${CMAKE_OBJCOPY} --strip-debug <OBJECT>")
endif()

block()
    set(names
        jaricom jcomapi jdapimin jdapistd jdarith jdcoefct jdcolor jddctmgr jdhuff jdicc jdinput jdmainct jdmarker
        jdmaster jdmerge jdphuff jdpostct jdsample jdatasrc jerror jidctflt jidctfst jidctint jidctred jmemmgr
        jmemnobs jquant1 jquant2 jutils)
    list(TRANSFORM names REPLACE "(.+)" "${libjpeg}/\\1.c" OUTPUT_VARIABLE sources)

    # Names as the library's own templates of headers have them.
    file(STRINGS ${libjpeg}/CMakeLists.txt VERSION REGEX "^set\\(VERSION ")
    string(REGEX REPLACE "^set\\(VERSION (.+)\\)$" "\\1" VERSION "${VERSION}")
    set(JPEG_LIB_VERSION 62)
    set(LIBJPEG_TURBO_VERSION_NUMBER 0)
    set(BITS_IN_JSAMPLE 8)
    set(D_ARITH_CODING_SUPPORTED 1)
    set(WITH_SIMD ${libjpeg_vector_code})
    set(INLINE inline)
    set(SIZE_T 8)
    set(generated ${CMAKE_BINARY_DIR}/libjpeg-turbo)
    foreach(header jconfig.h jconfigint.h jversion.h)
        configure_file(${libjpeg}/${header}.in ${generated}/${header})
    endforeach()

    if(NOT libjpeg_vector_code)
        kfx_add_third_party(kfx_libjpeg ${sources} ${libjpeg}/jsimd_none.c)
    else()
        set(vector ${libjpeg}/simd/x86_64)
        file(GLOB assembly ${vector}/*-sse.asm ${vector}/*-sse2.asm ${vector}/*-avx2.asm ${vector}/jsimdcpu.asm)
        list(FILTER assembly EXCLUDE REGEX "/j(ccolext|cgryext|dcolext|dmrgext)-")  # included by others
        add_library(kfx_libjpeg_assembly OBJECT ${assembly})
        set_target_properties(kfx_libjpeg_assembly PROPERTIES COMPILE_OPTIONS "")  # the assembler has others
        target_include_directories(kfx_libjpeg_assembly PRIVATE ${libjpeg}/simd/nasm ${vector})
        target_compile_definitions(kfx_libjpeg_assembly PRIVATE __x86_64__ PIC $<IF:$<BOOL:${WIN32}>,WIN64,ELF>)
        kfx_add_third_party(kfx_libjpeg ${sources} ${vector}/jsimd.c $<TARGET_OBJECTS:kfx_libjpeg_assembly>)
        # No settings from the environment. Every thread finds the same processor, so that none needs its own note.
        target_compile_definitions(kfx_libjpeg PRIVATE NO_GETENV NO_PUTENV THREAD_LOCAL=)
        target_include_directories(kfx_libjpeg PRIVATE ${libjpeg}/simd)
    endif()
    target_include_directories(kfx_libjpeg SYSTEM PUBLIC ${generated} ${libjpeg})
endblock()
