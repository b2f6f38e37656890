# setup_symbols(target): the target's code can be found again by its address. Costs what ships nothing.
function(setup_symbols target)
    if(NOT MSVC AND NOT SETUP_COVERAGE)
        target_compile_options(${target} PRIVATE $<$<CONFIG:MinSizeRel>:-g1>)
    endif()
endfunction()

# setup_shipped_file(target): the file survives the medium that it was started from, sees the real
# Windows folder on a terminal server, and is the same whenever it is built. Its symbols lie beside it
# in <file>.debug.
function(setup_shipped_file target)
    if(MSVC)
        target_link_options(${target} PRIVATE /SWAPRUN:CD /SWAPRUN:NET /TSAWARE)
        return()
    endif()
    target_link_options(${target} PRIVATE -Wl,--no-insert-timestamp)
    find_package(Python3 REQUIRED COMPONENTS Interpreter)
    set(script ${CMAKE_SOURCE_DIR}/cmake/image_flags.py)
    set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${script})
    set(split)
    set(symbols)
    if(CMAKE_BUILD_TYPE STREQUAL "MinSizeRel")
        set(split
            COMMAND ${CMAKE_OBJCOPY} --only-keep-debug $<TARGET_FILE:${target}> $<TARGET_FILE:${target}>.debug
            COMMAND ${CMAKE_STRIP} --strip-all $<TARGET_FILE:${target}>)
        set(symbols $<TARGET_FILE:${target}>.debug)
    endif()
    add_custom_command(TARGET ${target} POST_BUILD ${split}
        COMMAND Python3::Interpreter ${script} $<TARGET_FILE:${target}> ${symbols} VERBATIM)
endfunction()
