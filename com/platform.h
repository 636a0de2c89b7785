// The platform's automation headers and the interfaces of the component, as they must be included.
#pragma once

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <ocidl.h>
#include <oleauto.h>
#include <olectl.h>
#include <windows.h>

// Its names are those that hosts know, all in the global namespace: `::_CVLTable` is the interface,
// `tavolin::CVLTable` the class behind it.
#include "com/tavolin_h.h"
