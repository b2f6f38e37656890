# setup_compile_options(target): the warnings and hardening that all our code is built with.
function(setup_compile_options target)
    target_compile_features(${target} PUBLIC cxx_std_20)
    set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF)
    if(WIN32)
        # The declarations of Windows Vista: newer compilers' own headers do not compile with less. That
        # nothing is used which Windows XP x64 lacks is what tests/imports sees to.
        target_compile_definitions(${target} PRIVATE
            UNICODE _UNICODE WIN32_LEAN_AND_MEAN NOMINMAX WINVER=0x0600 _WIN32_WINNT=0x0600)
    endif()
    if(MSVC)
        target_compile_options(${target} PRIVATE /W4 /WX /permissive- /utf-8 /guard:cf)
        # The log library needs the very function that this compiler calls outdated.
        target_compile_definitions(${target} PRIVATE _CRT_SECURE_NO_WARNINGS)
    else()
        target_compile_options(${target} PRIVATE
            -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wundef -Wcast-qual
            -Wformat=2 -Werror -ffunction-sections -fdata-sections
            $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor -Woverloaded-virtual -Wold-style-cast>)
    endif()
    if(NOT MSVC AND NOT SETUP_COVERAGE)
        # No path of the building machine gets into a file, so that any folder builds the same.
        target_compile_options(${target} PRIVATE -ffile-prefix-map=${CMAKE_SOURCE_DIR}=.)
    endif()
    if(SETUP_SANITIZE)
        target_compile_options(${target} PRIVATE
            -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
        target_link_options(${target} PRIVATE -fsanitize=address,undefined)
        target_compile_definitions(${target} PRIVATE _GLIBCXX_ASSERTIONS)
    endif()
    if(SETUP_COVERAGE)
        target_compile_options(${target} PRIVATE --coverage)
        target_link_options(${target} PRIVATE --coverage)
    endif()
endfunction()

# setup_check_itself(target): the target's code ends the process where it leaves the language: library
# assertions, undefined behaviour, a stack overrun.
function(setup_check_itself target)
    # Traps instead of reports: this target has no sanitizer run-time library.
    target_compile_options(${target} PRIVATE
        -fsanitize=undefined -fsanitize-undefined-trap-on-error -fstack-protector-strong)
    target_compile_definitions(${target} PRIVATE _GLIBCXX_ASSERTIONS)
    # Some tool chains have the stack protector in a library of its own, others with the rest.
    execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=libssp.a
                    OUTPUT_VARIABLE ssp OUTPUT_STRIP_TRAILING_WHITESPACE)
    if(EXISTS "${ssp}")
        target_link_libraries(${target} PUBLIC ssp)
    endif()
endfunction()
