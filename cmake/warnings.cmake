# Warnings for the project's own targets and for nobody else's. In somebody else's project they are no
# errors: a compiler that warns of more must not stop that.
option(TAVOLIN_WARNINGS_AS_ERRORS "Let a warning end the build" ${PROJECT_IS_TOP_LEVEL})

function(tavolin_warnings target)
    if(MSVC)
        target_compile_options(${target} PRIVATE /W4 /utf-8
                               $<$<BOOL:${TAVOLIN_WARNINGS_AS_ERRORS}>:/WX>)
    else()
        target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow
                               -Wnon-virtual-dtor -Woverloaded-virtual
                               $<$<BOOL:${TAVOLIN_WARNINGS_AS_ERRORS}>:-Werror>)
    endif()
endfunction()
