# The library: tavolin::tavolin for programs, with what tavolin/base/export.h marks and nothing else;
# tavolin_internals for tests and the automation component, which use what it hides.
#
# Both are made of the same objects. A static library hides nothing, so it is both.
set(TAVOLIN_SOVERSION ${PROJECT_VERSION_MAJOR})
if(PROJECT_VERSION_MAJOR EQUAL 0)
    set(TAVOLIN_SOVERSION 0.${PROJECT_VERSION_MINOR})  # nothing is promised from 0.x to the next
endif()
set(TAVOLIN_GENERATED ${PROJECT_BINARY_DIR}/include)
configure_file(tavolin/version.h.in ${TAVOLIN_GENERATED}/tavolin/version.h @ONLY)

find_package(Threads REQUIRED)
set(TAVOLIN_SYSTEM_LIBRARIES ${CMAKE_DL_LIBS} ${CMAKE_THREAD_LIBS_INIT})

file(GLOB_RECURSE TAVOLIN_SOURCES CONFIGURE_DEPENDS tavolin/*.cpp)
file(GLOB_RECURSE TAVOLIN_HEADERS CONFIGURE_DEPENDS tavolin/*.h)

function(tavolin_describe target)
    target_compile_features(${target} PUBLIC cxx_std_20)
    target_include_directories(${target} PUBLIC
        $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}> $<BUILD_INTERFACE:${TAVOLIN_GENERATED}>
        $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
    target_link_libraries(${target} PRIVATE ${TAVOLIN_SYSTEM_LIBRARIES})
endfunction()

set(TAVOLIN_COMPILED tavolin)
if(BUILD_SHARED_LIBS)
    set(TAVOLIN_COMPILED tavolin_internals)
endif()
add_library(${TAVOLIN_COMPILED} STATIC ${TAVOLIN_SOURCES} ${TAVOLIN_HEADERS})
tavolin_describe(${TAVOLIN_COMPILED})
target_compile_definitions(${TAVOLIN_COMPILED} INTERFACE TAVOLIN_STATIC
                           PRIVATE $<IF:$<BOOL:${BUILD_SHARED_LIBS}>,TAVOLIN_BUILDING,TAVOLIN_STATIC>)
set_target_properties(${TAVOLIN_COMPILED} PROPERTIES POSITION_INDEPENDENT_CODE ON
    CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
tavolin_warnings(${TAVOLIN_COMPILED})
tavolin_together(${TAVOLIN_COMPILED} library)
tavolin_precompile(${TAVOLIN_COMPILED})

if(BUILD_SHARED_LIBS)
    add_library(tavolin SHARED $<TARGET_OBJECTS:tavolin_internals>)
    tavolin_describe(tavolin)
    set_target_properties(tavolin PROPERTIES LINKER_LANGUAGE CXX
        VERSION ${PROJECT_VERSION} SOVERSION ${TAVOLIN_SOVERSION})
    if(WIN32)
        # Versioned as elsewhere, and not confused with the automation component's Tavolin.dll.
        set_target_properties(tavolin PROPERTIES RUNTIME_OUTPUT_NAME tavolin-${TAVOLIN_SOVERSION})
    elseif(NOT APPLE)
        # What the standard library's templates leave in the objects is visible by its own say.
        set(TAVOLIN_EXPORTS ${CMAKE_CURRENT_LIST_DIR}/exports.map)
        target_link_options(tavolin PRIVATE LINKER:--version-script=${TAVOLIN_EXPORTS})
        set_target_properties(tavolin PROPERTIES LINK_DEPENDS ${TAVOLIN_EXPORTS})
    endif()
else()
    add_library(tavolin_internals ALIAS tavolin)
endif()
add_library(tavolin::tavolin ALIAS tavolin)
