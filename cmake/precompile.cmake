# Headers that nearly every source includes, compiled once: building takes half the time. A source
# still includes what it uses, since the library also builds without this, as in somebody else's
# project.
option(TAVOLIN_PRECOMPILE "Precompile common headers" ${PROJECT_IS_TOP_LEVEL})

# tavolin_precompile(TARGET HEADER...): the standard ones, and those named.
function(tavolin_precompile target)
    if(TAVOLIN_PRECOMPILE)
        target_precompile_headers(${target} PRIVATE <algorithm> <array> <cstdint> <cstring>
            <filesystem> <functional> <memory> <optional> <span> <string> <string_view> <utility>
            <vector> ${ARGN})
        # Reproducible, so that ccache finds them again.
        if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
            target_compile_options(${target} PRIVATE -Xclang -fno-pch-timestamp)
        elseif(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
            target_compile_options(${target} PRIVATE -fpch-preprocess)
        endif()
    endif()
endfunction()
