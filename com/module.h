// The component as a whole: its file and what still lives of it.
#pragma once

#include <string>

#include "com/platform.h"

namespace tavolin::com {

// Everything that a host can hold counts itself; the component may go when nothing is left.
void CountObject(int change);
long LivingObjects();

// A part of an object's lifetime.
class Counted {
  public:
    Counted() { CountObject(1); }
    ~Counted() { CountObject(-1); }
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;
};

// The full path of the component's own file.
std::wstring ModulePath();

// The description of an interface or a class in the type library that the component carries in
// itself, whatever is registered. Raises the platform's error as an Error.
ITypeLib* OwnTypeLibrary();

}  // namespace tavolin::com
