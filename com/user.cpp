#include "tavolin/model/user.h"

#include "com/properties.h"

namespace tavolin::com {
namespace {

class UserObject : public Object<CVLDBUser> {
  public:
    using Object::Object;

    TAVOLIN_TEXT(UserName)
    TAVOLIN_TEXT(UserFullName)
    TAVOLIN_TEXT(UserDescription)
    TAVOLIN_FLAG(UserDisabled)
    TAVOLIN_FLAG(CanRead)
    TAVOLIN_FLAG(CanReadWrite)
    TAVOLIN_FLAG(CanDelete)
    TAVOLIN_OBJECT(CVLUserNoteSet)
    TAVOLIN_TEXT(Key)

    STDMETHODIMP Equals(::_CVLDBUser* user, VARIANT_BOOL* result) override {
        return Return(result, [&] { return core().Equals(CoreOf<CVLDBUser>(user)); });
    }
    STDMETHODIMP PasswordCorrect(BSTR pwd, VARIANT_BOOL* result) override {
        return Return(result, [&] { return core().PasswordCorrect(Utf8(pwd)); });
    }
    STDMETHODIMP ChangePassword(BSTR oldPWD, BSTR newPWD, VARIANT_BOOL* result) override {
        return Return(result, [&] { return core().ChangePassword(Utf8(oldPWD), Utf8(newPWD)); });
    }

    TAVOLIN_EVENTS(core().OnPasswordChange, core().OnUserDisable, core().OnUserEnable)
};

}  // namespace

ObjectBase* NewObject(std::shared_ptr<CVLDBUser> core) { return new UserObject(std::move(core)); }

}  // namespace tavolin::com
