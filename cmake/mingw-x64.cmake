# Cross-builds for 64-bit Windows with mingw-w64; what is built runs under Wine.
set(TAVOLIN_MINGW x86_64-w64-mingw32)
include(${CMAKE_CURRENT_LIST_DIR}/mingw.cmake)
