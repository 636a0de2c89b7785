# The reference of the public headers: the target `docs`, where Doxygen is. It lands in docs/html of
# the build folder. A warning is an error.
find_program(DOXYGEN_PROGRAM doxygen)
set(TAVOLIN_REFERENCE ${PROJECT_BINARY_DIR}/docs)
set(TAVOLIN_REFERENCE_HEADERS ${TAVOLIN_REFERENCE}/headers)
configure_file(${PROJECT_SOURCE_DIR}/docs/Doxyfile ${TAVOLIN_REFERENCE}/Doxyfile @ONLY)
# The same headers as are installed.
file(WRITE ${TAVOLIN_REFERENCE}/make.cmake "
cmake_minimum_required(VERSION 3.21)
file(REMOVE_RECURSE \"${TAVOLIN_REFERENCE_HEADERS}\" \"${TAVOLIN_REFERENCE}/html\")
set(ROOTS \"${public_headers}\")
set(FOLDERS \"${PROJECT_SOURCE_DIR};${TAVOLIN_GENERATED}\")
set(CMAKE_INSTALL_PREFIX \"${TAVOLIN_REFERENCE_HEADERS}\")
set(DESTINATION .)
set(CMAKE_INSTALL_MESSAGE NEVER)
include(\"${PROJECT_SOURCE_DIR}/cmake/install_headers.cmake\")
execute_process(COMMAND \"${DOXYGEN_PROGRAM}\" \"${TAVOLIN_REFERENCE}/Doxyfile\" RESULT_VARIABLE result)
if(NOT result EQUAL 0)
    message(FATAL_ERROR \"The reference has not been made.\")
endif()
")
if(DOXYGEN_PROGRAM)
    add_custom_target(docs COMMAND ${CMAKE_COMMAND} -P ${TAVOLIN_REFERENCE}/make.cmake)
endif()
