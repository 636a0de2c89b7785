# Cross-builds for 32-bit Windows with mingw-w64.
set(TAVOLIN_MINGW i686-w64-mingw32)
include(${CMAKE_CURRENT_LIST_DIR}/mingw.cmake)
