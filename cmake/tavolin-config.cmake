# find_package(tavolin CONFIG) gives the target tavolin::tavolin.
include("${CMAKE_CURRENT_LIST_DIR}/tavolin-targets.cmake")
set(tavolin_FOUND TRUE)
foreach(component IN LISTS tavolin_FIND_COMPONENTS)
    if(tavolin_FIND_REQUIRED_${component})
        set(tavolin_FOUND FALSE)
        set(tavolin_NOT_FOUND_MESSAGE "tavolin has no components, so no \"${component}\"")
    endif()
endforeach()
