# Refuses shared libraries with a static SQLite. Each library and the program would have an SQLite of its own, and a call
# of SQLite in the program with a connection of the library would crash, or break the locks of the journal.
function(require_shared_sqlite target)
    while(TARGET ${target})
        get_target_property(alias ${target} ALIASED_TARGET)
        get_target_property(linked ${target} INTERFACE_LINK_LIBRARIES)
        get_target_property(type ${target} TYPE)
        set(name ${target})
        if(alias)
            set(target ${alias})
        elseif(type STREQUAL INTERFACE_LIBRARY AND linked)
            list(GET linked 0 target)
        else()
            break()
        endif()
    endwhile()
    set(file "${name}")
    if(TARGET ${target} AND NOT type STREQUAL STATIC_LIBRARY)
        get_target_property(file ${target} IMPORTED_LOCATION)
    elseif(NOT TARGET ${target})
        set(file "${target}") # a path, or a name for the linker
    endif()
    # The import library of a DLL also ends in .a.
    if(type STREQUAL STATIC_LIBRARY OR (file MATCHES "\\.a$" AND NOT file MATCHES "\\.dll\\.a$"))
        message(FATAL_ERROR "plantjournal: BUILD_SHARED_LIBS is ON, but SQLite is a static library (${file}): each shared "
            "library and the program would have an SQLite of its own; use a shared SQLite, or set BUILD_SHARED_LIBS to OFF")
    endif()
endfunction()
