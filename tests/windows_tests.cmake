# The program's own objects with their imports led to the simulated machine, linked with the tests.
set(not_rooms machine support native bench)

file(GLOB_RECURSE machine_sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/machine/*.cpp)
add_library(setup_machine STATIC ${machine_sources})
setup_compile_options(setup_machine)
target_include_directories(setup_machine PUBLIC ${CMAKE_CURRENT_SOURCE_DIR} ${CMAKE_CURRENT_SOURCE_DIR}/../src)

# Both libraries of the program (setup_core may build on setup_pure) with renamed imports.
set(under_test)
foreach(library setup_core setup_pure)
    if(TARGET ${library})
        set(renamed ${CMAKE_CURRENT_BINARY_DIR}/lib${library}_under_test.a)
        add_custom_command(
            OUTPUT ${renamed}
            COMMAND ${CMAKE_COMMAND} -DLIBRARY=$<TARGET_FILE:${library}>
                    -DMACHINE=$<TARGET_FILE:setup_machine> -DRENAMED=${renamed}
                    -DNM=${CMAKE_NM} -DOBJCOPY=${CMAKE_OBJCOPY} -DCOMPILER=${CMAKE_CXX_COMPILER}
                    -P ${CMAKE_CURRENT_SOURCE_DIR}/rename_imports.cmake
            DEPENDS ${library} setup_machine $<TARGET_FILE:${library}> $<TARGET_FILE:setup_machine>
                    ${CMAKE_CURRENT_SOURCE_DIR}/rename_imports.cmake
            COMMENT "Leading the imports of ${library} to the simulated machine"
            VERBATIM)
        list(APPEND under_test ${renamed})
    endif()
endforeach()
add_custom_target(setup_core_under_test DEPENDS ${under_test})

# Links a test program with the renamed libraries and the machine. The program's objects come first
# and whole: of an inline function that a test shares with them (a handle's owner, say), the linker
# keeps the first copy, and only theirs leads to the machine.
function(link_under_test target)
    add_dependencies(${target} setup_core_under_test)
    set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${under_test})
    target_link_options(${target} PRIVATE -static
        -Wl,--whole-archive ${under_test} -Wl,--no-whole-archive)
    target_link_libraries(${target} PRIVATE setup_machine setupapi)
endfunction()

file(GLOB_RECURSE test_sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
list(FILTER test_sources EXCLUDE REGEX "/tests/(machine|native|bench)/")
# The program's log formats, for the tests that must know every line it writes.
find_package(Python3 REQUIRED COMPONENTS Interpreter)
set(log_formats ${CMAKE_CURRENT_BINARY_DIR}/generated/log_formats.inc)
file(GLOB_RECURSE program_sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/../src/*.cpp)
add_custom_command(
    OUTPUT ${log_formats}
    COMMAND Python3::Interpreter ${CMAKE_CURRENT_SOURCE_DIR}/support/log_formats.py
            ${CMAKE_CURRENT_SOURCE_DIR}/../src ${log_formats}
    DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/support/log_formats.py ${program_sources}
    COMMENT "Listing the program's log formats"
    VERBATIM)
add_executable(setup_tests ${test_sources} ${log_formats})
# Some tests read what is built beside them.
add_dependencies(setup_tests Setup Quenlor64)
setup_compile_options(setup_tests)
# The tests themselves gain nothing from the optimiser, and each would read the same large headers.
if(NOT MSVC)
    target_compile_options(setup_tests PRIVATE -O0)
endif()
target_precompile_headers(setup_tests PRIVATE <doctest/doctest.h> machine/machine.h)
# This one makes doctest's own code out of its header.
set_source_files_properties(support/doctest_main.cpp PROPERTIES SKIP_PRECOMPILE_HEADERS ON)
target_compile_definitions(setup_tests PRIVATE DOCTEST_CONFIG_NO_MULTITHREADING)
target_include_directories(setup_tests SYSTEM PRIVATE ${CMAKE_CURRENT_BINARY_DIR}/include)
target_include_directories(setup_tests PRIVATE ${CMAKE_CURRENT_BINARY_DIR})
link_under_test(setup_tests)
if(SETUP_CHECKS)
    target_compile_definitions(setup_machine PUBLIC GUARD_MEMORY)
endif()

include(bench/bench.cmake)

if(CMAKE_HOST_WIN32)
    set(launcher)
else()
    set(launcher ${CMAKE_CURRENT_SOURCE_DIR}/run_under_wine.sh ${CMAKE_BINARY_DIR}/wine-prefix)
endif()

# With the build folder's name in front: in one run over several build trees ctest gives the properties
# of a test to all tests of that name.
cmake_path(GET CMAKE_BINARY_DIR FILENAME tree)
file(GLOB rooms LIST_DIRECTORIES true RELATIVE ${CMAKE_CURRENT_SOURCE_DIR} CONFIGURE_DEPENDS
     ${CMAKE_CURRENT_SOURCE_DIR}/*)
foreach(room ${rooms})
    file(GLOB_RECURSE room_sources ${CMAKE_CURRENT_SOURCE_DIR}/${room}/*.cpp)
    if(room_sources AND NOT room IN_LIST not_rooms)
        add_test(NAME ${tree}.${room}
                 COMMAND ${launcher} $<TARGET_FILE:setup_tests> --source-file=*tests/${room}/*
                         --no-intro=true)
        # Far more than a room takes: the machine may be busy with others.
        set_tests_properties(${tree}.${room} PROPERTIES
                             TIMEOUT 1200 ENVIRONMENT SETUP_TEST_TIMEOUT=1190)
    endif()
endforeach()
# Thousands of runs: started first, and given more time than the others.
set_tests_properties(${tree}.torture PROPERTIES COST 1000)

# What ships must load on the oldest system. The other builds bring imports of their tools.
if(NOT SETUP_CHECKS AND NOT SETUP_COVERAGE)
    add_test(NAME ${tree}.imports
             COMMAND Python3::Interpreter ${CMAKE_CURRENT_SOURCE_DIR}/imports/check_imports.py
                     ${CMAKE_OBJDUMP} ${CMAKE_CURRENT_SOURCE_DIR}/imports/windows_xp_x64.txt
                     $<TARGET_FILE:Setup> $<TARGET_FILE:Quenlor64> $<TARGET_FILE:Vantrel64>)
endif()
