# kfx_ship(TARGET): the target's file is handed on to users, who need no symbols. They are kept in TARGET.dll.debug or
# TARGET.exe.debug beside it; the file names it, so that a debugger finds it, and so does
#     x86_64-w64-mingw32-addr2line -f -e kfxplug1.dll.debug ADDRESS
function(kfx_ship target)
    if(NOT MINGW)
        return()
    endif()
    if(NOT CMAKE_OBJCOPY)
        message(FATAL_ERROR "The toolchain's objcopy is missing: symbols cannot be kept apart from ${target}.")
    endif()
    find_package(Python3 REQUIRED COMPONENTS Interpreter)
    # Equal sources make equal files, so none holds the time of its linking. Windows 7 is the oldest system.
    target_link_options(${target} PRIVATE
        LINKER:--no-insert-timestamp,--major-os-version=6,--minor-os-version=1
        LINKER:--major-subsystem-version=6,--minor-subsystem-version=1)
    # Copying would put the clock's time into the file.
    set(objcopy ${CMAKE_COMMAND} -E env SOURCE_DATE_EPOCH=0 ${CMAKE_OBJCOPY})
    set(file $<TARGET_FILE:${target}>)
    add_custom_command(TARGET ${target} POST_BUILD
        COMMAND ${objcopy} --only-keep-debug ${file} ${file}.debug
        COMMAND ${objcopy} --strip-all --add-gnu-debuglink=${file}.debug ${file}
        COMMAND ${Python3_EXECUTABLE} -B ${PROJECT_SOURCE_DIR}/cmake/protect_resources.py ${file})
    set_property(TARGET ${target} APPEND PROPERTY ADDITIONAL_CLEAN_FILES ${file}.debug)
endfunction()
