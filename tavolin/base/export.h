// What a program finds in the shared library. TAVOLIN_API stands before every class and function
// that a program may use, and before what inline members of those call; nothing else is exported.
// A program that links the library statically has TAVOLIN_STATIC defined, which matters on Windows
// alone. The packages for CMake and pkg-config do that.
#pragma once

#if defined(_WIN32)
#if defined(TAVOLIN_STATIC)
#define TAVOLIN_API
#elif defined(TAVOLIN_BUILDING)
#define TAVOLIN_API __declspec(dllexport)
#else
#define TAVOLIN_API __declspec(dllimport)
#endif
#else
#define TAVOLIN_API __attribute__((visibility("default")))
#endif
