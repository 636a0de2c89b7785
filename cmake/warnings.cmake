# Warnings are errors for the project's own targets and for nobody else's.
function(tavolin_warnings target)
    if(MSVC)
        target_compile_options(${target} PRIVATE /W4 /WX /utf-8)
    else()
        target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow
                               -Wnon-virtual-dtor -Woverloaded-virtual -Werror)
    endif()
endfunction()
