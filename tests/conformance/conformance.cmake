# The statements about Windows: a library of their own, which the tests link with its imports led to
# the simulated machine, and an executable that asks the system it runs on: Wine, or a real Windows.
file(GLOB_RECURSE statement_sources CONFIGURE_DEPENDS
     ${CMAKE_CURRENT_SOURCE_DIR}/conformance/*.cpp)
list(FILTER statement_sources EXCLUDE REGEX "/conformance/(worlds/|asking|deviations|machine_test)")
set(system_world_sources ${CMAKE_CURRENT_SOURCE_DIR}/conformance/worlds/system_world.cpp
    ${CMAKE_CURRENT_SOURCE_DIR}/conformance/worlds/main.cpp)

add_library(conformance_statements STATIC ${statement_sources})
setup_compile_options(conformance_statements)
target_include_directories(conformance_statements PUBLIC
    ${CMAKE_CURRENT_SOURCE_DIR} ${CMAKE_CURRENT_SOURCE_DIR}/../src)
target_precompile_headers(conformance_statements PRIVATE
    ${CMAKE_SOURCE_DIR}/src/platform/platform.h conformance/statement.h <algorithm> <array>)

# Stand-alone: a person with a real Windows runs it and sends its report back.
add_executable(statements ${system_world_sources}
    conformance/asking.cpp conformance/deviations.cpp)
setup_compile_options(statements)
target_link_options(statements PRIVATE -static
    "SHELL:-Wl,--whole-archive $<TARGET_FILE:conformance_statements> -Wl,--no-whole-archive")
target_link_libraries(statements PRIVATE conformance_statements setupapi cfgmgr32 version)

find_package(Python3 REQUIRED COMPONENTS Interpreter)
cmake_path(GET CMAKE_BINARY_DIR FILENAME conformance_tree)
add_test(NAME ${conformance_tree}.conformance.relied_on
    COMMAND Python3::Interpreter -B ${CMAKE_CURRENT_SOURCE_DIR}/conformance/check_relied_on.py)
