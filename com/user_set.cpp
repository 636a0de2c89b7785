#include "tavolin/model/user_set.h"

#include "com/properties.h"
#include "com/set_object.h"

namespace tavolin::com {
namespace {

class UserSetObject : public SetObject<CVLDBUserSet> {
  public:
    using SetObject::SetObject;

    STDMETHODIMP Add(BSTR UserName, BSTR UserPassword, VARIANT_BOOL CanRead,
                     VARIANT_BOOL CanReadWrite, VARIANT_BOOL CanDelete, ::_CVLUserNoteSet* NoteSet,
                     ::_CVLDBUser** result) override {
        return Return(result, [&] {
            return core().Add(Utf8(UserName), Utf8(UserPassword), IsTrue(CanRead),
                              IsTrue(CanReadWrite), IsTrue(CanDelete),
                              CoreOf<CVLUserNoteSet>(NoteSet));
        });
    }
    STDMETHODIMP Update(VARIANT varKey, VARIANT CanRead, VARIANT CanReadWrite, VARIANT CanDelete,
                        ::_CVLUserNoteSet* NoteSet, ::_CVLDBUser** result) override {
        return Return(result, [&] {
            const Argument which(varKey);
            IndexKey key = which.Key();
            const auto can_read = Argument(CanRead).Flag(key);
            const auto can_write = Argument(CanReadWrite).Flag(key);
            const auto can_delete = Argument(CanDelete).Flag(key);
            return core().Update(key, can_read, can_write, can_delete,
                                 CoreOf<CVLUserNoteSet>(NoteSet));
        });
    }
    TAVOLIN_ITEM(CVLDBUser)
    TAVOLIN_OBJECT_STATE
    TAVOLIN_NAVIGATION(User, ::_CVLDBUser, ::_CVLDBUser)

    TAVOLIN_EVENTS(core().OnUserAdd, core().OnUserRemove)
};

}  // namespace

ObjectBase* NewObject(std::shared_ptr<CVLDBUserSet> core) {
    return new UserSetObject(std::move(core));
}

}  // namespace tavolin::com
