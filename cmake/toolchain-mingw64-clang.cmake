# clang for 64-bit Windows, with the headers, libraries and linker of the mingw GCC beside it. It tells
# what another compiler thinks of the code; what ships is built by GCC.
include(${CMAKE_CURRENT_LIST_DIR}/toolchain-mingw64.cmake)
find_program(CLANG_C NAMES clang REQUIRED)
find_program(CLANG_CXX NAMES clang++ REQUIRED)
set(CMAKE_C_COMPILER ${CLANG_C})
set(CMAKE_CXX_COMPILER ${CLANG_CXX})
# The binutils beside GCC, as in the other build: the tests read what they print.
foreach(tool NM OBJCOPY OBJDUMP)
    string(TOLOWER ${tool} name)
    find_program(CMAKE_${tool} NAMES x86_64-w64-mingw32-${name} ${name} REQUIRED)
endforeach()
set(CMAKE_C_COMPILER_TARGET x86_64-w64-mingw32)
set(CMAKE_CXX_COMPILER_TARGET x86_64-w64-mingw32)
# By itself clang does not find the folder of a GCC that has the thread model in its name.
execute_process(COMMAND ${MINGW_GXX} -print-file-name=libgcc.a
                OUTPUT_VARIABLE gcc_folder OUTPUT_STRIP_TRAILING_WHITESPACE)
cmake_path(GET gcc_folder PARENT_PATH gcc_folder)
set(library_folder ${gcc_folder}/include/c++)
# No table of addresses in the objects: it would not follow when the tests rename symbols.
set(CMAKE_C_FLAGS_INIT "-B${gcc_folder} -fno-addrsig")
set(CMAKE_CXX_FLAGS_INIT "-B${gcc_folder} -fno-addrsig -nostdinc++ -Wno-unused-command-line-argument -isystem ${library_folder} \
-isystem ${library_folder}/x86_64-w64-mingw32 -isystem ${library_folder}/backward")
foreach(kind EXE SHARED MODULE)
    set(CMAKE_${kind}_LINKER_FLAGS_INIT "-L${gcc_folder}")
endforeach()
