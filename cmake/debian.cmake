# Defines the Debian packages, one for each component. CPack writes them to the build directory.
set(CPACK_GENERATOR DEB)
set(CPACK_COMPONENTS_ALL Runtime Development Command)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_PACKAGE_CONTACT "the plantjournal authors <authors@plantjournal.invalid>")
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS # independent of the umask
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=") # any later version with the same major version also works
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS # not installed yet
    ${CMAKE_BINARY_DIR} ${CMAKE_BINARY_DIR}/file ${CMAKE_BINARY_DIR}/query ${CMAKE_BINARY_DIR}/report
    ${CMAKE_BINARY_DIR}/validation ${CMAKE_BINARY_DIR}/watch)
set(what "Stores plants and their lineage, strains, a timeline, feedings, harvests,
photos, health observations and notes in one file.")

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libplantjournal1)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_MULTIARCH same)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "${what}\n\nThis package contains the shared libraries.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libplantjournal-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_MULTIARCH same)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "libplantjournal1 (= ${PROJECT_VERSION}), libsqlite3-dev")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "${what}\n\nThis package contains the files for building programs.")

set(CPACK_DEBIAN_COMMAND_PACKAGE_NAME plantjournal)
set(CPACK_DEBIAN_COMMAND_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_COMMAND_PACKAGE_DEPENDS "libplantjournal1 (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_COMMAND_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_COMMAND_DESCRIPTION "${what}\n\nThis package contains the command.")

# Files that Debian policy requires.
string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
configure_file(cmake/debian/changelog.in changelog @ONLY)
foreach(component ${CPACK_COMPONENTS_ALL})
    string(TOUPPER ${component} name)
    set(doc share/doc/${CPACK_DEBIAN_${name}_PACKAGE_NAME})
    install(FILES LICENSE DESTINATION ${doc} RENAME copyright COMPONENT ${component})
    install(FILES ${CMAKE_CURRENT_BINARY_DIR}/changelog DESTINATION ${doc} COMPONENT ${component})
endforeach()
install(FILES cmake/debian/libplantjournal1.lintian-overrides DESTINATION share/lintian/overrides
    RENAME libplantjournal1 COMPONENT Runtime)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_SOURCE_DIR}/cmake/debian/triggers)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_SOURCE_DIR}/cmake/debian/compress.cmake)

include(CPack)
