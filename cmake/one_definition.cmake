# Links all object files, which makes GCC compare their types. With -flto it reports a type that two source files define
# differently, even if they belong to different programs. The result of the link is not used. Second builds of the same
# files are left out: of the watcher and its tests, and of the code for POSIX systems, where the C library declares some
# structures otherwise.

function(list_object_files out directory)
    get_property(targets DIRECTORY ${directory} PROPERTY BUILDSYSTEM_TARGETS)
    set(objects)
    foreach(target ${targets})
        get_target_property(type ${target} TYPE)
        if(type MATCHES "^(EXECUTABLE|(STATIC|SHARED|OBJECT)_LIBRARY)$" AND NOT target MATCHES "_verify_|watch_families|strict_posix")
            list(APPEND objects $<FILTER:$<TARGET_OBJECTS:${target}>,EXCLUDE,\\.gch$>) # not the precompiled headers
        endif()
    endforeach()
    get_property(subdirectories DIRECTORY ${directory} PROPERTY SUBDIRECTORIES)
    foreach(subdirectory ${subdirectories})
        list_object_files(more ${subdirectory})
        list(APPEND objects ${more})
    endforeach()
    set(${out} ${objects} PARENT_SCOPE)
endfunction()

list_object_files(objects ${PROJECT_SOURCE_DIR})
# Each program has its own main, and their types may differ. The linker keeps the first.
add_custom_command(OUTPUT ${PROJECT_BINARY_DIR}/one_definition.o
    COMMAND ${CMAKE_CXX_COMPILER} -flto -r -flinker-output=rel -Wodr -Werror=odr -Wno-lto-type-mismatch -Wl,-z,muldefs
            -o ${PROJECT_BINARY_DIR}/one_definition.o ${objects}
    DEPENDS ${objects}
    COMMENT "Comparing the types of all object files"
    COMMAND_EXPAND_LISTS
    VERBATIM)
add_custom_target(one_definition DEPENDS ${PROJECT_BINARY_DIR}/one_definition.o)
