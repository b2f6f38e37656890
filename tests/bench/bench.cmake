# The benchmark: the program's own objects on the simulated machine, as the tests have them.
file(GLOB bench_sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/bench/*.cpp)
add_executable(setup_bench ${bench_sources} support/program_state.cpp)
add_dependencies(setup_bench setup_core_under_test)
setup_compile_options(setup_bench)
target_link_libraries(setup_bench PRIVATE ${under_test} setup_machine setupapi)
target_link_options(setup_bench PRIVATE -static)
