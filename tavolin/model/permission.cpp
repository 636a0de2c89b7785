#include "tavolin/model/permission.h"

#include "tavolin/errors/error_num.h"
#include "tavolin/errors/trap.h"
#include "tavolin/model/session.h"

namespace tavolin {

void AskRead(const Session& session, const char* source) {
    if (session.MayRead()) return;
    Raise(CVLErrorNum::GetUserPermissionToRdError(), source,
          Message("User ", session.UserName(), " Does Not Have Permission To Read!"));
}

void AskWrite(const Session& session, const char* source) {
    if (session.MayWrite()) return;
    Raise(CVLErrorNum::GetUserPermissionToRWError(), source,
          Message("User ", session.UserName(), " Does Not Have Permission To Read/Write!"));
}

void AskDelete(const Session& session, const char* source) {
    if (session.MayDelete()) return;
    Raise(CVLErrorNum::GetUserPermissionToDelError(), source,
          Message("User ", session.UserName(), " Does Not Have Permission To Delete!"));
}

}  // namespace tavolin
