# rename_imports(LIBRARY STAND_INS NAME RESULT): a copy of the library with its imports led to the
# functions of the library STAND_INS; RESULT is set to its path, of which NAME is a part.
function(rename_imports library stand_ins name result)
    set(renamed ${CMAKE_CURRENT_BINARY_DIR}/lib${library}_${name}.a)
    add_custom_command(
        OUTPUT ${renamed}
        COMMAND ${CMAKE_COMMAND} -DLIBRARY=$<TARGET_FILE:${library}>
                -DMACHINE=$<TARGET_FILE:${stand_ins}> -DRENAMED=${renamed}
                -DNM=${CMAKE_NM} -DOBJCOPY=${CMAKE_OBJCOPY} -DCOMPILER=${MINGW_GXX}
                -P ${CMAKE_SOURCE_DIR}/cmake/rename_imports.cmake
        DEPENDS ${library} ${stand_ins} $<TARGET_FILE:${library}> $<TARGET_FILE:${stand_ins}>
                ${CMAKE_SOURCE_DIR}/cmake/rename_imports.cmake
        COMMENT "Leading the imports of ${library} to ${stand_ins}"
        VERBATIM)
    set(${result} ${renamed} PARENT_SCOPE)
endfunction()

# rename_imports_of(TARGET STAND_INS NAME SUFFIX): TARGET makes such copies of both libraries of the
# program, built with the suffix SUFFIX. Its property COPIES has their paths.
function(rename_imports_of target stand_ins name suffix)
    set(copies)
    foreach(library setup_core${suffix} setup_pure${suffix})
        rename_imports(${library} ${stand_ins} ${name} renamed)
        list(APPEND copies ${renamed})
    endforeach()
    add_custom_target(${target} DEPENDS ${copies})
    set_target_properties(${target} PROPERTIES COPIES "${copies}")
endfunction()
