# Copies LIBRARY to RENAMED with every reference to a function that the library MACHINE stands in for
# led there: `__imp_X` becomes `fake_X` (a pointer to its own X), a plain `X` that was compiled
# without dllimport becomes `direct_X` (a jump through that pointer). Fails when LIBRARY imports a
# function that MACHINE does not know: such a call would reach the real system.
cmake_minimum_required(VERSION 3.25)

# Nothing of these must be simulated: the last error, "this process", text conversion.
set(real_functions GetLastError SetLastError GetCurrentProcess WideCharToMultiByte)
set(system_libraries kernel32 user32 advapi32 setupapi cfgmgr32 version newdev shell32 gdi32 ole32)

function(symbols_of file filter pattern result)
    execute_process(COMMAND ${NM} -g ${filter} ${file} OUTPUT_VARIABLE text ERROR_QUIET
                    COMMAND_ERROR_IS_FATAL ANY)
    string(REGEX MATCHALL "${pattern}" lines "${text}")
    list(TRANSFORM lines REPLACE "^.* ([^ \n]+)\n$" "\\1")
    list(REMOVE_DUPLICATES lines)
    set(${result} "${lines}" PARENT_SCOPE)
endfunction()

# Names that an import library of the tool chain offers.
function(imports_of library result)
    execute_process(COMMAND ${COMPILER} -print-file-name=lib${library}.a
                    OUTPUT_VARIABLE file OUTPUT_STRIP_TRAILING_WHITESPACE
                    COMMAND_ERROR_IS_FATAL ANY)
    symbols_of(${file} --defined-only " [A-Z] __imp_[A-Za-z0-9_]+\n" names)
    list(TRANSFORM names REPLACE "^__imp_" "")
    set(${result} "${names}" PARENT_SCOPE)
endfunction()

symbols_of(${MACHINE} --defined-only " [A-Z] fake_[A-Za-z0-9_]+\n" simulated)
list(TRANSFORM simulated REPLACE "^fake_" "")
symbols_of(${LIBRARY} --undefined-only " U [A-Za-z0-9_]+\n" undefined)
imports_of(msvcrt run_time)
set(system)
foreach(library ${system_libraries})
    imports_of(${library} names)
    list(APPEND system ${names})
endforeach()

set(map)
set(unknown)
foreach(symbol ${undefined})
    string(REGEX REPLACE "^__imp_" "" name ${symbol})
    if(name IN_LIST simulated)
        if(name STREQUAL symbol)
            string(APPEND map "${name} direct_${name}\n")
        else()
            string(APPEND map "${symbol} fake_${name}\n")
        endif()
    elseif(name IN_LIST run_time OR name IN_LIST real_functions)
        continue()
    elseif(NOT name STREQUAL symbol OR name IN_LIST system)
        list(APPEND unknown ${name})
    endif()
endforeach()
if(unknown)
    list(JOIN unknown "\n    " names)
    message(FATAL_ERROR
        "${MACHINE} does not know these functions that the program calls:\n    ${names}\n"
        "Write hooks for them in tests/machine/ and stand-ins in tools/packetcheck/rehearsal/ (or, "
        "when the real ones may be called, name them in cmake/rename_imports.cmake).")
endif()

file(WRITE ${RENAMED}.map "${map}")
file(REMOVE ${RENAMED})
execute_process(COMMAND ${OBJCOPY} --redefine-syms=${RENAMED}.map ${LIBRARY} ${RENAMED}
                COMMAND_ERROR_IS_FATAL ANY)
