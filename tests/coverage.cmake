# The list of log texts that the tests reach: each room notes what it reached, and a last test
# compares that with the texts in the sources.
find_package(Python3 COMPONENTS Interpreter)
set(log_texts ${CMAKE_CURRENT_BINARY_DIR}/log_texts)
file(MAKE_DIRECTORY ${log_texts})
# Runs that only look for crashes and leaks show no text to be right, and the companions log nothing.
set(showing_rooms ${rooms})
list(REMOVE_ITEM showing_rooms torture companions)
get_property(all_tests DIRECTORY PROPERTY TESTS)
foreach(room ${showing_rooms})
    if(${tree}.${room} IN_LIST all_tests)
        set_property(TEST ${tree}.${room} APPEND PROPERTY
                     ENVIRONMENT SETUP_TEST_LOG_TEXTS=${log_texts}/${room}.txt)
        # With the build's folder in its name: several builds may be tested in one run.
        set_property(TEST ${tree}.${room} APPEND PROPERTY FIXTURES_SETUP "log texts of ${CMAKE_BINARY_DIR}")
    endif()
endforeach()
if(Python3_FOUND)
    add_test(NAME ${tree}.log_coverage
             COMMAND Python3::Interpreter ${CMAKE_CURRENT_SOURCE_DIR}/log_coverage.py
                     ${CMAKE_CURRENT_SOURCE_DIR}/../src ${log_texts}
                     ${CMAKE_CURRENT_SOURCE_DIR}/log_coverage_exceptions.txt)
    set_tests_properties(${tree}.log_coverage PROPERTIES
                         FIXTURES_REQUIRED "log texts of ${CMAKE_BINARY_DIR}")
endif()
