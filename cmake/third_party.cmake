# giflib, libdeflate, libjpeg-turbo, libwebp, lodepng and zlib as static libraries in whichever toolchain is in use,
# from Debian's sources (cmake/fetch-third-party, which is silent and immediate when they are there).
set(KFX_THIRD_PARTY_DIR ${CMAKE_SOURCE_DIR}/.work/third-party CACHE PATH "Sources of the image libraries")

execute_process(
    COMMAND ${CMAKE_SOURCE_DIR}/cmake/fetch-third-party ${KFX_THIRD_PARTY_DIR}
    RESULT_VARIABLE fetch_result)
if(NOT fetch_result EQUAL 0)
    message(FATAL_ERROR "The image libraries' sources are missing from ${KFX_THIRD_PARTY_DIR}, see above.")
endif()

# Not our code: no warnings, always optimised, and AddressSanitizer only (their arithmetic relies on the usual
# wrap-around and shift idioms).
function(kfx_add_third_party name)
    add_library(${name} STATIC ${ARGN})
    target_link_libraries(${name} PRIVATE kfx_hardening)
    if(MSVC)
        target_compile_options(${name} PRIVATE /w)
    else()
        target_compile_options(${name} PRIVATE -w -O2 -fno-sanitize=undefined)
    endif()
endfunction()

# kfx_mend_third_party(SOURCES FILE TEXT BY): in the list of that name, the file whose path ends so is exchanged for a
# copy in which BY stands for TEXT. A later version that has no such text is taken as it is.
function(kfx_mend_third_party sources file text by)
    set(kept ${${sources}})
    set(mended ${kept})
    list(FILTER mended INCLUDE REGEX "/${file}$")
    list(REMOVE_ITEM kept ${mended})
    file(READ ${mended} content)
    string(REPLACE "${text}" "${by}" content "${content}")
    get_filename_component(name ${file} NAME)
    set(copy ${CMAKE_BINARY_DIR}/mended/${name})
    file(CONFIGURE OUTPUT ${copy} CONTENT "${content}" @ONLY)
    set(${sources} ${kept} ${copy} PARENT_SCOPE)
endfunction()

# The library proper: the other C files beside these are its command-line tools.
set(giflib ${KFX_THIRD_PARTY_DIR}/giflib)
kfx_add_third_party(kfx_giflib
    ${giflib}/dgif_lib.c
    ${giflib}/egif_lib.c
    ${giflib}/gif_err.c
    ${giflib}/gif_hash.c
    ${giflib}/gifalloc.c
    ${giflib}/openbsd-reallocarray.c)
target_include_directories(kfx_giflib SYSTEM PUBLIC ${giflib})

set(libdeflate ${KFX_THIRD_PARTY_DIR}/libdeflate)
file(GLOB libdeflate_sources ${libdeflate}/lib/*.c ${libdeflate}/lib/*/cpu_features.c)
list(FILTER libdeflate_sources EXCLUDE REGEX "/gzip_")
kfx_add_third_party(kfx_libdeflate ${libdeflate_sources})
target_include_directories(kfx_libdeflate SYSTEM PUBLIC ${libdeflate})

include(${CMAKE_CURRENT_LIST_DIR}/libjpeg_turbo.cmake)

set(libwebp ${KFX_THIRD_PARTY_DIR}/libwebp)
file(GLOB libwebp_sources
    ${libwebp}/src/dec/*.c
    ${libwebp}/src/demux/*.c
    ${libwebp}/src/dsp/*.c
    ${libwebp}/src/enc/*.c
    ${libwebp}/src/mux/*.c
    ${libwebp}/src/utils/*.c
    ${libwebp}/sharpyuv/*.c)
# Faults of the library where memory runs out; tests/media/refused_allocations_test.cpp shows them. A table without
# memory is freed before its `next` is set. A frame whose header gets no memory is read without it, then written so, or
# the library crashes. So it does where a frame's encoding fails without a code, and without memory
# for codes a picture's pixels are left out of the file.
kfx_mend_third_party(libwebp_sources utils/huffman_utils.c
    "huffman_tables->curr_segment = root;"
    "huffman_tables->curr_segment = root; root->next = NULL;")
kfx_mend_third_party(libwebp_sources mux/muxread.c
    "    ChunkAssignData(&subchunk, &temp, copy_data, chunk->tag_);\n  }\n  ChunkSetHead(&subchunk, &wpi->header_);"
    "    if (ChunkAssignData(&subchunk, &temp, copy_data, chunk->tag_) != WEBP_MUX_OK) goto Fail;\n  }\n  if (ChunkSetHead(&subchunk, &wpi->header_) != WEBP_MUX_OK) goto Fail;")
kfx_mend_third_party(libwebp_sources mux/anim_encode.c
    "    error_code = sub_frame->error_code;"
    "    error_code = sub_frame->error_code != VP8_ENC_OK ? sub_frame->error_code : VP8_ENC_ERROR_OUT_OF_MEMORY;")
kfx_mend_third_party(libwebp_sources enc/vp8l_enc.c
    "        if (tokens == NULL) goto Error;"
    "        if (tokens == NULL) { WebPEncodingSetError(pic, VP8_ENC_ERROR_OUT_OF_MEMORY); goto Error; }")
kfx_add_third_party(kfx_libwebp ${libwebp_sources})
target_include_directories(kfx_libwebp SYSTEM PUBLIC ${libwebp}/src PRIVATE ${libwebp})
# Files for later processors are compiled for them, one by one; the library asks the processor before it calls
# them. Files for other architectures compile to nothing.
if(NOT MSVC AND CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64")
    target_compile_definitions(kfx_libwebp PRIVATE WEBP_HAVE_SSE2 WEBP_HAVE_SSE41)
    set(sse41_sources ${libwebp_sources})
    list(FILTER sse41_sources INCLUDE REGEX "_sse41\\.c$")
    set_source_files_properties(${sse41_sources} PROPERTIES COMPILE_OPTIONS -msse4.1)
endif()

# For the tests, as another reader and writer. Pixels only: file access and the chunks of text and colour profiles are left out.
set(lodepng ${KFX_THIRD_PARTY_DIR}/lodepng)
kfx_add_third_party(kfx_lodepng ${lodepng}/lodepng.cpp)
target_include_directories(kfx_lodepng SYSTEM PUBLIC ${lodepng})
target_compile_definitions(kfx_lodepng PUBLIC LODEPNG_NO_COMPILE_DISK LODEPNG_NO_COMPILE_ANCILLARY_CHUNKS)

# Unpacking only, and only what PNG files have.
set(zlib ${KFX_THIRD_PARTY_DIR}/zlib)
kfx_add_third_party(kfx_zlib
    ${zlib}/adler32.c
    ${zlib}/inffast.c
    ${zlib}/inflate.c
    ${zlib}/inftrees.c
    ${zlib}/zutil.c)
target_include_directories(kfx_zlib SYSTEM PUBLIC ${zlib})
target_compile_definitions(kfx_zlib PUBLIC ZLIB_CONST PRIVATE NO_GZIP)
