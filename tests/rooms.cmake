# One ctest entry for each room and test program, and the list of log texts that the tests reach.
if(CMAKE_HOST_WIN32)
    set(launcher)
else()
    set(launcher ${CMAKE_CURRENT_SOURCE_DIR}/run_under_wine.sh ${CMAKE_BINARY_DIR}/wine-prefix)
endif()
# With the build folder's name in front: in one run over several build trees ctest gives the properties
# of a test to all tests of that name.
cmake_path(GET CMAKE_BINARY_DIR FILENAME tree)

# Thousands of runs each: every case of these files has an entry of its own, so that the cores share them.
set(long_files
    torture/fuzzed_files_test.cpp
    torture/program_test.cpp
    torture/random_failures_test.cpp
    torture/update_install_test.cpp
    torture/whole_packet_test.cpp
    install/staging/staging_threads_repeated_test.cpp)
# Runs that only look for crashes and leaks show no text to be right, and the companions log nothing.
set(rooms_without_log_texts torture companions)
# Each entry notes here what it reached, and a last one compares that with the texts in the sources.
# Emptied, so that nothing counts which an entry of yesterday reached.
set(log_texts ${CMAKE_CURRENT_BINARY_DIR}/log_texts)
file(REMOVE_RECURSE ${log_texts})
file(MAKE_DIRECTORY ${log_texts})

# add_entry(suffix room part filter...): part is empty for what is no part of a long file.
function(add_entry suffix room part)
    string(REPLACE "_" "." kind "${suffix}")
    set(name ${tree}${kind}.${room}${part})
    add_test(NAME ${name}
             COMMAND ${launcher} $<TARGET_FILE:setup_tests${suffix}> --no-intro=true ${ARGN})
    # Far more than it takes: the machine may be busy with others.
    set_tests_properties(${name} PROPERTIES TIMEOUT 1200 ENVIRONMENT SETUP_TEST_TIMEOUT=1190)
    # Whatever its exit code: a run that tells nothing, not even how many cases it had, was none.
    set_tests_properties(${name} PROPERTIES FAIL_REGULAR_EXPRESSION "^$")
    if(room STREQUAL "companions")
        # The log library writes real files beside the real executable, which the entries share.
        set_tests_properties(${name} PROPERTIES RESOURCE_LOCK "log of ${tree}")
    else()
        # It computes all the time; an entry of the lab, which mostly waits, takes one.
        set_tests_properties(${name} PROPERTIES PROCESSORS 3)
    endif()
    if(part)
        # The long ones start first.
        set_tests_properties(${name} PROPERTIES COST 1000)
    endif()
    if(suffix STREQUAL "" AND NOT room IN_LIST rooms_without_log_texts)
        set_property(TEST ${name} APPEND PROPERTY
                     ENVIRONMENT SETUP_TEST_LOG_TEXTS=${log_texts}/${room}${part}.txt)
        set_property(TEST ${name} APPEND PROPERTY FIXTURES_SETUP "log texts of ${tree}")
    endif()
endfunction()

# add_cases(suffix room file): an entry for each test case of a long file.
function(add_cases suffix room file)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${file})
    file(STRINGS ${file} cases REGEX "^TEST_CASE")
    list(LENGTH cases count)
    cmake_path(GET file STEM stem)
    foreach(number RANGE 1 ${count})
        add_entry("${suffix}" ${room} ".${stem}.${number}"
                  --source-file=*tests/${file} --first=${number} --last=${number})
    endforeach()
endfunction()

file(GLOB rooms LIST_DIRECTORIES true RELATIVE ${CMAKE_CURRENT_SOURCE_DIR} CONFIGURE_DEPENDS
     ${CMAKE_CURRENT_SOURCE_DIR}/*)
foreach(room IN LISTS rooms)
    file(GLOB_RECURSE room_sources RELATIVE ${CMAKE_CURRENT_SOURCE_DIR}
         ${CMAKE_CURRENT_SOURCE_DIR}/${room}/*.cpp)
    if(NOT room_sources OR room IN_LIST not_rooms)
        continue()
    endif()
    set(room_long_files ${long_files})
    list(FILTER room_long_files INCLUDE REGEX "^${room}/")
    list(REMOVE_ITEM room_sources ${room_long_files})
    list(TRANSFORM room_long_files PREPEND "*tests/" OUTPUT_VARIABLE excluded)
    list(JOIN excluded "," excluded)
    foreach(suffix IN ITEMS "" ${checked})
        if(room_sources)
            add_entry("${suffix}" ${room} "" --source-file=*tests/${room}/*
                      --source-file-exclude=${excluded})
        endif()
        foreach(file IN LISTS room_long_files)
            add_cases("${suffix}" ${room} ${file})
        endforeach()
    endforeach()
endforeach()

add_test(NAME ${tree}.log_coverage
         COMMAND Python3::Interpreter ${CMAKE_CURRENT_SOURCE_DIR}/log_coverage.py
                 ${CMAKE_CURRENT_SOURCE_DIR}/../src ${log_texts}
                 ${CMAKE_CURRENT_SOURCE_DIR}/log_coverage_exceptions.txt)
set_tests_properties(${tree}.log_coverage PROPERTIES FIXTURES_REQUIRED "log texts of ${tree}")
