// The classes that hosts can create.
#pragma once

#include <span>

#include "com/faces.h"

namespace tavolin::com {

// Every class of the component; those without `create` are had from other objects.
std::span<const ClassRow* const> Classes();

// The class of that id that can be created, or null.
const ClassRow* CreatableClass(REFCLSID clsid);

}  // namespace tavolin::com
