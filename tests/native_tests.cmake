# What computes only, built for the machine at hand and run with its sanitizers.
file(GLOB native_sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/native/*.cpp)
add_executable(native_tests ${native_sources} support/doctest_main.cpp)
setup_compile_options(native_tests)
target_include_directories(native_tests PRIVATE ${CMAKE_CURRENT_SOURCE_DIR} ${CMAKE_CURRENT_SOURCE_DIR}/../src)
target_include_directories(native_tests SYSTEM PRIVATE ${CMAKE_CURRENT_BINARY_DIR}/include)
target_link_libraries(native_tests PRIVATE setup_pure)
add_test(NAME native COMMAND native_tests)
