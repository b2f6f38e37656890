# What computes only, built for the machine at hand and run with its sanitizers.
file(GLOB native_sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/native/*.cpp)
add_executable(native_tests ${native_sources} fuzz/targets.cpp support/doctest_main.cpp)
setup_compile_options(native_tests)
set_source_files_properties(native/kept_inputs_test.cpp PROPERTIES
    COMPILE_DEFINITIONS KEPT_INPUTS="${CMAKE_CURRENT_SOURCE_DIR}/fuzz/inputs")
target_include_directories(native_tests PRIVATE ${CMAKE_CURRENT_SOURCE_DIR} ${CMAKE_CURRENT_SOURCE_DIR}/../src)
target_include_directories(native_tests SYSTEM PRIVATE ${CMAKE_CURRENT_BINARY_DIR}/include)
target_link_libraries(native_tests PRIVATE setup_pure)
add_test(NAME native COMMAND native_tests)

# The same code under clang's fuzzer, whatever compiler the rest is built with. Only on demand:
#     cmake --build build/native --target setup_fuzz && build/native/setup_fuzz tests/fuzz/inputs
find_program(FUZZING_COMPILER NAMES clang++ clang++-14)
if(FUZZING_COMPILER)
    get_target_property(pure_sources setup_pure SOURCES)
    list(TRANSFORM pure_sources PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/../src/)
    set(fuzz_sources ${CMAKE_CURRENT_SOURCE_DIR}/fuzz/targets.cpp
        ${CMAKE_CURRENT_SOURCE_DIR}/fuzz/fuzzer.cpp ${pure_sources})
    add_custom_command(
        OUTPUT ${CMAKE_BINARY_DIR}/setup_fuzz
        COMMAND ${FUZZING_COMPILER} -std=c++20 -O1 -g -fno-sanitize-recover=all
                -fsanitize=fuzzer,address,undefined -I${CMAKE_CURRENT_SOURCE_DIR}
                -I${CMAKE_CURRENT_SOURCE_DIR}/../src ${fuzz_sources} -o ${CMAKE_BINARY_DIR}/setup_fuzz
        DEPENDS ${fuzz_sources}
        COMMENT "Building the fuzzer"
        VERBATIM)
    add_custom_target(setup_fuzz DEPENDS ${CMAKE_BINARY_DIR}/setup_fuzz)
endif()
