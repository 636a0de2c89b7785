# `cpack -G DEB` in the build folder makes a Debian package of what is installed.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "The Tavolin developers <maintainers@tavolin.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "small in-process multi-user database")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"A C++ library that keeps users with rights, tables of ten text fields, links
between tables, and records with attachments in one file; and tavolin, a
program for shells and scripts that works on such files. With headers and
what CMake and pkg-config need to find them.")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SECTION database)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_STRIP_FILES ON)
# What only this kind of package has is made just before it is closed.
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/debian_files.cmake)
set(CPACK_TAVOLIN_SOURCE ${PROJECT_SOURCE_DIR})
set(CPACK_TAVOLIN_STRIP ${CMAKE_STRIP})
if(BUILD_SHARED_LIBS)
    set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})
    set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
    file(WRITE ${PROJECT_BINARY_DIR}/debian/triggers "activate-noawait ldconfig\n")
    set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA ${PROJECT_BINARY_DIR}/debian/triggers)
endif()
include(CPack)
