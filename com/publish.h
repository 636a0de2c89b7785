// The export into an Access database, under one name for the classes that offer it.
#pragma once

#include "com/failure.h"

namespace tavolin::com {

// Calls the library's own; where this build of the library has none, raises the run-time error 445,
// "Object doesn't support this action".
template <class Core, class... Arguments>
void MakeMDB(Core& core, const Arguments&... arguments) {
    if constexpr (requires { core.MakeItMDB(arguments...); }) {
        core.MakeItMDB(arguments...);
    } else {
        constexpr std::int32_t kNoSuchAction = 445;
        throw Error(kNoSuchAction, "Tavolin", Message("Object doesn't support this action"));
    }
}

}  // namespace tavolin::com
