// The refusals that the sets of a database share.
#pragma once

#include "tavolin/model/session.h"

namespace tavolin {

[[noreturn]] void RefuseRead(const Session& session, const char* source);
[[noreturn]] void RefuseWrite(const Session& session, const char* source);
[[noreturn]] void RefuseDelete(const Session& session, const char* source);

// Raise "User <name> Does Not Have Permission To ...!" unless the session has the right.
inline void AskRead(const Session& session, const char* source) {
    if (!session.MayRead()) RefuseRead(session, source);
}
inline void AskWrite(const Session& session, const char* source) {
    if (!session.MayWrite()) RefuseWrite(session, source);
}
inline void AskDelete(const Session& session, const char* source) {
    if (!session.MayDelete()) RefuseDelete(session, source);
}

}  // namespace tavolin
