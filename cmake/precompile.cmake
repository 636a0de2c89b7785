# Headers that nearly every source includes, compiled once: building takes half the time. A source
# still includes what it uses, since the library also builds without this, as in somebody else's
# project.
option(TAVOLIN_PRECOMPILE "Precompile common headers" ${PROJECT_IS_TOP_LEVEL})
set(TAVOLIN_TOGETHER "" CACHE STRING
    "Compile these many sources at a time: library, host, tests; CMAKE_UNITY_BUILD is for everything")

# tavolin_together(TARGET PART): compiles it many sources at a time where TAVOLIN_TOGETHER says so for
# this part.
function(tavolin_together target part)
    if(part IN_LIST TAVOLIN_TOGETHER)
        set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 48)
    endif()
endfunction()

# tavolin_precompile(TARGET HEADER...): the standard ones, and those named. Not where many sources are
# compiled at a time, since they read them once as it is.
function(tavolin_precompile target)
    get_target_property(together ${target} UNITY_BUILD)
    if(TAVOLIN_PRECOMPILE AND NOT together)
        target_precompile_headers(${target} PRIVATE <algorithm> <array> <cstdint> <cstring>
            <filesystem> <functional> <memory> <optional> <span> <string> <string_view> <utility>
            <vector> ${ARGN})
        tavolin_reproducible(${target})
    endif()
endfunction()

# Lets ccache find what is compiled with precompiled headers again.
function(tavolin_reproducible target)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
        target_compile_options(${target} PRIVATE -Xclang -fno-pch-timestamp)
    elseif(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        target_compile_options(${target} PRIVATE -fpch-preprocess)
    endif()
endfunction()

# tavolin_precompile_small(TARGET): for test programs of a source or two, which share the headers of
# tavolin_test_headers where that has been made.
function(tavolin_precompile_small target)
    if(TARGET tavolin_test_headers)
        target_precompile_headers(${target} REUSE_FROM tavolin_test_headers)
        tavolin_reproducible(${target})
    endif()
endfunction()
