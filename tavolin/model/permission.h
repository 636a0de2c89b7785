// The refusals that the sets of a database share.
#pragma once

namespace tavolin {

class Session;

// Raise "User <name> Does Not Have Permission To ...!" unless the session has the right.
void AskRead(const Session& session, const char* source);
void AskWrite(const Session& session, const char* source);
void AskDelete(const Session& session, const char* source);

}  // namespace tavolin
