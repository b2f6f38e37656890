# The benchmark: the program's own objects on the simulated machine, as the tests have them.
file(GLOB bench_sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/bench/*.cpp)
add_executable(setup_bench ${bench_sources} support/program_state.cpp)
setup_compile_options(setup_bench)
link_under_test(setup_bench "")

# Its smallest measurement, so that it is known to work when somebody needs it.
add_test(NAME ${tree}.bench
         COMMAND ${launcher} $<TARGET_FILE:setup_bench> --smallest)
