# Installs the libraries, their headers, and the files for find_package and pkg-config.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

# All that is installed besides the command, so that a build of a few programs can be installed, too
add_custom_target(plantjournal_libraries)
add_dependencies(plantjournal_libraries ${libraries})

install(TARGETS ${libraries} EXPORT plantjournal
    RUNTIME COMPONENT Runtime
    LIBRARY COMPONENT Runtime NAMELINK_COMPONENT Development
    ARCHIVE COMPONENT Development
    FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/plantjournal COMPONENT Development)

# For find_package
set(config_dir ${CMAKE_INSTALL_LIBDIR}/cmake/plantjournal)
install(EXPORT plantjournal NAMESPACE plantjournal:: DESTINATION ${config_dir} FILE plantjournal-targets.cmake
    COMPONENT Development)
configure_package_config_file(cmake/plantjournal-config.cmake.in plantjournal-config.cmake
    INSTALL_DESTINATION ${config_dir})
write_basic_package_version_file(plantjournal-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES
    ${CMAKE_CURRENT_BINARY_DIR}/plantjournal-config.cmake
    ${CMAKE_CURRENT_BINARY_DIR}/plantjournal-config-version.cmake
    DESTINATION ${config_dir} COMPONENT Development)

# For pkg-config. The installation can be moved, unless the library directory is an absolute path.
file(RELATIVE_PATH pc_prefix /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" pc_prefix "\${pcfiledir}/${pc_prefix}")
if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
    set(pc_prefix "${CMAKE_INSTALL_PREFIX}")
endif()
cmake_path(APPEND pc_libdir "\${prefix}" "${CMAKE_INSTALL_LIBDIR}")
cmake_path(APPEND pc_includedir "\${prefix}" "${CMAKE_INSTALL_INCLUDEDIR}" plantjournal)
# A program with a static library must link SQLite. Requires.private would need --static, which also adds the libraries
# that SQLite needs.
set(pc_requires Requires)
if(BUILD_SHARED_LIBS)
    set(pc_requires Requires.private)
endif()
set(plantjournal_needs "")
set(plantjournal_file_needs "plantjournal = ${PROJECT_VERSION}, ")
set(plantjournal_query_needs "plantjournal = ${PROJECT_VERSION}, ")
set(plantjournal_validation_needs "plantjournal = ${PROJECT_VERSION}, ")
set(plantjournal_report_needs "plantjournal_query = ${PROJECT_VERSION}, ")
set(plantjournal_watch_needs "plantjournal = ${PROJECT_VERSION}, ")
foreach(library ${libraries})
    set(pc_needs "${${library}_needs}")
    configure_file(cmake/plantjournal.pc.in ${library}.pc @ONLY)
    install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${library}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
        COMPONENT Development)
endforeach()
