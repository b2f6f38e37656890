# rename_imports_of(TARGET STAND_INS NAME SUFFIX): TARGET makes copies of both libraries of the
# program, built with the suffix SUFFIX, with their imports led to the functions of the library
# STAND_INS. Its property COPIES has their paths; NAME is part of these.
function(rename_imports_of target stand_ins name suffix)
    set(copies)
    foreach(library setup_core${suffix} setup_pure${suffix})
        set(renamed ${CMAKE_CURRENT_BINARY_DIR}/lib${library}_${name}.a)
        add_custom_command(
            OUTPUT ${renamed}
            COMMAND ${CMAKE_COMMAND} -DLIBRARY=$<TARGET_FILE:${library}>
                    -DMACHINE=$<TARGET_FILE:${stand_ins}> -DRENAMED=${renamed}
                    -DNM=${CMAKE_NM} -DOBJCOPY=${CMAKE_OBJCOPY} -DCOMPILER=${CMAKE_CXX_COMPILER}
                    -P ${CMAKE_SOURCE_DIR}/cmake/rename_imports.cmake
            DEPENDS ${library} ${stand_ins} $<TARGET_FILE:${library}> $<TARGET_FILE:${stand_ins}>
                    ${CMAKE_SOURCE_DIR}/cmake/rename_imports.cmake
            COMMENT "Leading the imports of ${library} to ${stand_ins}"
            VERBATIM)
        list(APPEND copies ${renamed})
    endforeach()
    add_custom_target(${target} DEPENDS ${copies})
    set_target_properties(${target} PROPERTIES COPIES "${copies}")
endfunction()
