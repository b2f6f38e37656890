# setup_image_flags(target): the file survives the medium that it was started from, and sees the real
# Windows folder on a terminal server.
function(setup_image_flags target)
    if(MSVC)
        target_link_options(${target} PRIVATE /SWAPRUN:CD /SWAPRUN:NET /TSAWARE)
        return()
    endif()
    find_package(Python3 REQUIRED COMPONENTS Interpreter)
    set(script ${CMAKE_SOURCE_DIR}/cmake/image_flags.py)
    set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${script})
    add_custom_command(TARGET ${target} POST_BUILD
        COMMAND Python3::Interpreter ${script} $<TARGET_FILE:${target}> VERBATIM)
endfunction()
