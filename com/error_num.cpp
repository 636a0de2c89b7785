#include "tavolin/errors/error_num.h"

#include "com/object.h"

namespace tavolin::com {
namespace {

#define TAVOLIN_NUMBER(Name)                                       \
    STDMETHODIMP get_##Name(LONG* result) override {               \
        return Return(result, [] { return CVLErrorNum::Name(); }); \
    }

class ErrorNumObject : public Object<CVLErrorNum> {
  public:
    using Object::Object;

    TAVOLIN_NUMBER(GetTransAlreadyStartedError)
    TAVOLIN_NUMBER(GetNoTransStartedError)
    TAVOLIN_NUMBER(GetRecordUpDateError)
    TAVOLIN_NUMBER(GetNoteUpDateError)
    TAVOLIN_NUMBER(GetUserUpDateError)
    TAVOLIN_NUMBER(GetAttachmentUpDateError)
    TAVOLIN_NUMBER(GetTableUpDateError)
    TAVOLIN_NUMBER(GetRecordAddError)
    TAVOLIN_NUMBER(GetNoteAddError)
    TAVOLIN_NUMBER(GetUserAddError)
    TAVOLIN_NUMBER(GetAttachmentAddError)
    TAVOLIN_NUMBER(GetTableAddError)
    TAVOLIN_NUMBER(GetOwnerAddError)
    TAVOLIN_NUMBER(GetDBAddError)
    TAVOLIN_NUMBER(GetFirstRecordError)
    TAVOLIN_NUMBER(GetLastRecordError)
    TAVOLIN_NUMBER(GetPreviousRecordError)
    TAVOLIN_NUMBER(GetNextRecordError)
    TAVOLIN_NUMBER(GetFirstNoteError)
    TAVOLIN_NUMBER(GetLastNoteError)
    TAVOLIN_NUMBER(GetPreviousNoteError)
    TAVOLIN_NUMBER(GetNextNoteError)
    TAVOLIN_NUMBER(GetFirstUserError)
    TAVOLIN_NUMBER(GetLastUserError)
    TAVOLIN_NUMBER(GetPreviousUserError)
    TAVOLIN_NUMBER(GetNextUserError)
    TAVOLIN_NUMBER(GetFirstAttachmentError)
    TAVOLIN_NUMBER(GetLastAttachmentError)
    TAVOLIN_NUMBER(GetPreviousAttachmentError)
    TAVOLIN_NUMBER(GetNextAttachmentError)
    TAVOLIN_NUMBER(GetFirstTableError)
    TAVOLIN_NUMBER(GetLastTableError)
    TAVOLIN_NUMBER(GetPreviousTableError)
    TAVOLIN_NUMBER(GetNextTableError)
    TAVOLIN_NUMBER(GetRecordNotFoundError)
    TAVOLIN_NUMBER(GetDBNotFoundError)
    TAVOLIN_NUMBER(GetNoteNotFoundError)
    TAVOLIN_NUMBER(GetAttachmentNotFoundError)
    TAVOLIN_NUMBER(GetTableNotFoundError)
    TAVOLIN_NUMBER(GetDBOwnerNotFoundError)
    TAVOLIN_NUMBER(GetValueNotFoundError)
    TAVOLIN_NUMBER(GetReferencedFldNotFoundError)
    TAVOLIN_NUMBER(GetFieldOutOfRangeError)
    TAVOLIN_NUMBER(GetNewTableCreationError)
    TAVOLIN_NUMBER(GetNewDBCreationError)
    TAVOLIN_NUMBER(GetNewUserCreationError)
    TAVOLIN_NUMBER(GetUserLogedOnNotFoundError)
    TAVOLIN_NUMBER(GetDBPasswordError)
    TAVOLIN_NUMBER(GetUserPasswordError)
    TAVOLIN_NUMBER(GetDBOwnerChangeError)
    TAVOLIN_NUMBER(GetDBPasswordChangeError)
    TAVOLIN_NUMBER(GetUserPasswordChangeError)
    TAVOLIN_NUMBER(GetDBNotSetError)
    TAVOLIN_NUMBER(GetDBOverwriteError)
    TAVOLIN_NUMBER(GetDBToMDBError)
    TAVOLIN_NUMBER(GetDBToTextError)
    TAVOLIN_NUMBER(GetDBToHTMLError)
    TAVOLIN_NUMBER(GetUserPermissionToRdError)
    TAVOLIN_NUMBER(GetUserPermissionToRWError)
    TAVOLIN_NUMBER(GetUserPermissionToDelError)
    TAVOLIN_NUMBER(GetUserDisabledError)
    TAVOLIN_NUMBER(GetUserNotFoundError)
    TAVOLIN_NUMBER(GetUserIsNotDBOwnerError)
};

#undef TAVOLIN_NUMBER

}  // namespace

ObjectBase* NewObject(std::shared_ptr<CVLErrorNum> core) {
    return new ErrorNumObject(std::move(core));
}

}  // namespace tavolin::com
