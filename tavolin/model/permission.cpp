#include "tavolin/model/permission.h"

#include "tavolin/errors/error_num.h"
#include "tavolin/errors/trap.h"

namespace tavolin {

void RefuseRead(const Session& session, const char* source) {
    Raise(CVLErrorNum::GetUserPermissionToRdError(), source,
          Message("User ", session.UserName(), " Does Not Have Permission To Read!"));
}

void RefuseWrite(const Session& session, const char* source) {
    Raise(CVLErrorNum::GetUserPermissionToRWError(), source,
          Message("User ", session.UserName(), " Does Not Have Permission To Read/Write!"));
}

void RefuseDelete(const Session& session, const char* source) {
    Raise(CVLErrorNum::GetUserPermissionToDelError(), source,
          Message("User ", session.UserName(), " Does Not Have Permission To Delete!"));
}

}  // namespace tavolin
