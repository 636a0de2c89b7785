// The component in the registry: for the whole machine or for one user.
#pragma once

#include "com/platform.h"

namespace tavolin::com {

// Writes the classes, their ProgIDs, the interfaces and the type library under `root`, with the
// path that the component was loaded from. What had been written when it fails is taken away again.
HRESULT Register(HKEY root);

// Takes them away; what is not there is no error. ProgIDs and the type library's own entry stay
// while the component of the other word size is registered.
HRESULT Unregister(HKEY root);

}  // namespace tavolin::com
