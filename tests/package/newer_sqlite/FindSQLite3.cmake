# Defines only the target that CMake's module of this name will keep.
find_path(SQLite3_INCLUDE_DIR sqlite3.h)
find_library(SQLite3_LIBRARY sqlite3)
if(NOT TARGET SQLite3::SQLite3)
    add_library(SQLite3::SQLite3 UNKNOWN IMPORTED)
    set_target_properties(SQLite3::SQLite3 PROPERTIES
        IMPORTED_LOCATION ${SQLite3_LIBRARY}
        INTERFACE_INCLUDE_DIRECTORIES ${SQLite3_INCLUDE_DIR})
endif()
set(SQLite3_VERSION 3.24)
set(SQLite3_FOUND TRUE)
