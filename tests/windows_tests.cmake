# The program's own objects with their imports led to the simulated machine, linked with the tests:
# setup_tests with what ships, setup_tests_checked with the same sources built so that they check
# themselves. Tests and machine are compiled once, for both.
set(not_rooms machine support native bench probe fuzz)
set(checked)
if(TARGET setup_core_checked)
    set(checked _checked)
endif()

# setup_tests_options(target): how the tests' and the machine's own code is compiled.
function(setup_tests_options target)
    setup_compile_options(${target})
    setup_check_itself(${target})
    target_include_directories(${target} PUBLIC
        ${CMAKE_CURRENT_SOURCE_DIR} ${CMAKE_CURRENT_SOURCE_DIR}/../src)
endfunction()

file(GLOB_RECURSE machine_sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/machine/*.cpp)
add_library(setup_machine STATIC ${machine_sources})
setup_tests_options(setup_machine)
# Most of a compilation's time goes into the large headers that all of these read. An include that is
# missing shows with -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON.
target_precompile_headers(setup_machine PRIVATE machine/state.h <algorithm> <array>)
include(conformance/conformance.cmake)

include(${CMAKE_SOURCE_DIR}/cmake/rename_imports_of.cmake)

# Links a test program with the renamed libraries and the machine. The program's objects come first
# and whole: of an inline function that a test shares with them (a handle's owner, say), the linker
# keeps the first copy, and only theirs leads to the machine.
function(link_under_test target suffix)
    get_target_property(copies under_test${suffix} COPIES)
    add_dependencies(${target} under_test${suffix})
    set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${copies})
    target_link_options(${target} PRIVATE -static
        -Wl,--whole-archive ${copies} -Wl,--no-whole-archive)
    target_link_libraries(${target} PRIVATE setup_machine setupapi)
endfunction()

file(GLOB_RECURSE test_sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
list(FILTER test_sources EXCLUDE REGEX "/tests/(machine|native|bench|probe|fuzz)/")
# What shows that memory is guarded says nothing where it is not.
set(memory_sources machine_selftest/guarded_memory_test.cpp)
list(FILTER test_sources EXCLUDE REGEX "/guarded_memory_test\\.cpp$")
list(REMOVE_ITEM test_sources ${statement_sources} ${system_world_sources})

# The program's log formats, for the tests that must know every line it writes.
find_package(Python3 REQUIRED COMPONENTS Interpreter)
set(log_formats ${CMAKE_CURRENT_BINARY_DIR}/generated/log_formats.inc)
file(GLOB_RECURSE program_sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/../src/*.cpp)
add_custom_command(
    OUTPUT ${log_formats}
    COMMAND Python3::Interpreter ${CMAKE_CURRENT_SOURCE_DIR}/support/log_formats.py
            ${CMAKE_CURRENT_SOURCE_DIR}/../src ${log_formats}
    DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/support/log_formats.py ${CMAKE_SOURCE_DIR}/scripts/log_texts.py ${program_sources}
    COMMENT "Listing the program's log formats"
    VERBATIM)

add_library(setup_test_objects OBJECT ${test_sources} ${log_formats})
setup_tests_options(setup_test_objects)
# The tests themselves gain nothing from the optimiser, and each would read the same large headers.
target_compile_options(setup_test_objects PUBLIC -O0)
target_precompile_headers(setup_test_objects PRIVATE <doctest/doctest.h> machine/machine.h)
# This one makes doctest's own code out of its header.
set_source_files_properties(support/doctest_main.cpp PROPERTIES SKIP_PRECOMPILE_HEADERS ON)
set_source_files_properties(docs/page.cpp PROPERTIES
    COMPILE_DEFINITIONS PAGES_FOLDER="${CMAKE_SOURCE_DIR}/docs")
# The lists of functions whose calls were led to the machine.
set_source_files_properties(conformance/machine_test.cpp PROPERTIES COMPILE_DEFINITIONS
    "CORE_IMPORTS=\"${CMAKE_CURRENT_BINARY_DIR}/libsetup_core_under_test.a.map\"")
target_compile_definitions(setup_test_objects PUBLIC DOCTEST_CONFIG_NO_MULTITHREADING)
target_include_directories(setup_test_objects SYSTEM PUBLIC ${CMAKE_CURRENT_BINARY_DIR}/include)
target_include_directories(setup_test_objects PRIVATE ${CMAKE_CURRENT_BINARY_DIR})

rename_imports(conformance_statements setup_machine under_test statements_under_test)
add_custom_target(statements_copy DEPENDS ${statements_under_test})
foreach(suffix IN ITEMS "" ${checked})
    rename_imports_of(under_test${suffix} setup_machine under_test "${suffix}")
    add_executable(setup_tests${suffix} ${memory_sources})
    # Some tests read what is built beside them.
    add_dependencies(setup_tests${suffix} Setup Quenlor64)
    setup_tests_options(setup_tests${suffix})
    target_link_libraries(setup_tests${suffix} PRIVATE setup_test_objects)
    link_under_test(setup_tests${suffix} "${suffix}")
    # Statements enter themselves into their list: they are linked whole as well.
    set_property(TARGET setup_tests${suffix} APPEND PROPERTY LINK_DEPENDS ${statements_under_test})
    target_link_options(setup_tests${suffix} PRIVATE
        "SHELL:-Wl,--whole-archive ${statements_under_test} -Wl,--no-whole-archive")
    add_dependencies(setup_tests${suffix} statements_copy)
endforeach()
if(TARGET setup_tests_checked)
    # This copy of the file comes before the one in the machine's library, which then stays out.
    target_sources(setup_tests_checked PRIVATE machine/guarded_memory.cpp)
    target_compile_definitions(setup_tests_checked PRIVATE GUARD_MEMORY)
    # Every allocation goes through it.
    set_source_files_properties(machine/guarded_memory.cpp PROPERTIES COMPILE_OPTIONS -Os)
endif()

# Started by the test of what it is linked with.
add_executable(emergency_probe probe/emergency.cpp $<TARGET_OBJECTS:setup_run_time>)
setup_compile_options(emergency_probe)
target_include_directories(emergency_probe PRIVATE ${CMAKE_CURRENT_SOURCE_DIR}/../src)
target_link_options(emergency_probe PRIVATE -static)
foreach(suffix IN ITEMS "" ${checked})
    add_dependencies(setup_tests${suffix} emergency_probe)
endforeach()

include(rooms.cmake)
include(bench/bench.cmake)

# What ships must load on the oldest system; counters bring imports of their own.
if(NOT SETUP_COVERAGE)
    add_test(NAME ${tree}.imports
             COMMAND Python3::Interpreter ${CMAKE_CURRENT_SOURCE_DIR}/imports/check_imports.py
                     ${CMAKE_OBJDUMP} ${CMAKE_CURRENT_SOURCE_DIR}/imports/windows_xp_x64.txt
                     $<TARGET_FILE:Setup> $<TARGET_FILE:Quenlor64> $<TARGET_FILE:Vantrel64>)
    add_test(NAME ${tree}.image
             COMMAND Python3::Interpreter ${CMAKE_CURRENT_SOURCE_DIR}/imports/check_image.py
                     $<TARGET_FILE:Setup> $<TARGET_FILE:Quenlor64> $<TARGET_FILE:Vantrel64>)
endif()
