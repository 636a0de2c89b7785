# Installs the library with what CMake and pkg-config need to find it, in any place: nothing that is
# installed names a folder, so that the whole may be moved.
include(CMakePackageConfigHelpers)
set(TAVOLIN_CMAKE_FOLDER ${CMAKE_INSTALL_LIBDIR}/cmake/tavolin)

install(TARGETS tavolin EXPORT tavolin-targets)
install(EXPORT tavolin-targets NAMESPACE tavolin:: DESTINATION ${TAVOLIN_CMAKE_FOLDER})
set(same SameMajorVersion)
if(PROJECT_VERSION_MAJOR EQUAL 0)
    set(same SameMinorVersion)
endif()
write_basic_package_version_file(${PROJECT_BINARY_DIR}/tavolin-config-version.cmake
                                 COMPATIBILITY ${same})
install(FILES ${CMAKE_CURRENT_LIST_DIR}/tavolin-config.cmake
              ${PROJECT_BINARY_DIR}/tavolin-config-version.cmake
        DESTINATION ${TAVOLIN_CMAKE_FOLDER})

# The headers that programs include, and what those include. Which these are is found out when they
# are installed.
set(public_headers tavolin/tavolin.h tavolin/base/clock.h tavolin/base/code_page.h
    tavolin/base/utf16.h tavolin/persist/database_file.h tavolin/persist/file_system.h
    tavolin/persist/paths.h tavolin/salvage/salvage.h)
install(CODE "
    set(ROOTS \"${public_headers}\")
    set(FOLDERS \"${PROJECT_SOURCE_DIR};${TAVOLIN_GENERATED}\")
    set(DESTINATION \"${CMAKE_INSTALL_INCLUDEDIR}\")
    include(\"${CMAKE_CURRENT_LIST_DIR}/install_headers.cmake\")")

# A program that links a static library has to name what that needs; with a shared one it has not.
set(private_libraries "")
foreach(library ${TAVOLIN_SYSTEM_LIBRARIES})
    if(NOT library MATCHES "^-")
        set(library "-l${library}")
    endif()
    string(APPEND private_libraries " ${library}")
endforeach()
set(pc_libraries "")
set(pc_private_libraries "")
set(pc_flags "")
if(BUILD_SHARED_LIBS)
    set(pc_private_libraries "${private_libraries}")
else()
    set(pc_libraries "${private_libraries}")
    set(pc_flags " -DTAVOLIN_STATIC")
endif()
file(RELATIVE_PATH pc_to_prefix ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
configure_file(${CMAKE_CURRENT_LIST_DIR}/tavolin.pc.in ${PROJECT_BINARY_DIR}/tavolin.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/tavolin.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
