#include "tavolin/model/user.h"

#include "tavolin/base/text.h"
#include "tavolin/errors/error_num.h"
#include "tavolin/errors/trap.h"
#include "tavolin/model/session.h"
#include "tavolin/model/stored_collection.h"
#include "tavolin/model/user_note_set.h"
#include "tavolin/model/user_set.h"
#include "tavolin/persist/property_bag.h"
#include "tavolin/persist/scrambler.h"

namespace tavolin {

CVLDBUser::CVLDBUser() : CVLDBUser(Session::Current()) {}

CVLDBUser::CVLDBUser(std::shared_ptr<Session> session)
    : session_(std::move(session)), notes_(std::make_shared<tavolin::CVLUserNoteSet>(session_)) {}

CVLDBUser::~CVLDBUser() = default;

void CVLDBUser::AskOwnership(const char* source) const {
    if (session_->IsOwner()) return;
    Raise(CVLErrorNum::GetUserIsNotDBOwnerError(), source,
          Message("User: ", session_->UserName(),
                  " Is Not The DataBase Owner\r\n"
                  "Thus Does Not Have The Right To Set User State!"));
}

void CVLDBUser::Key(std::string_view key) {
    Trap("CVLDBUser:Key Property Let", [&] { key_ = key; });
}

void CVLDBUser::UserName(std::string_view name) {
    Trap("CVLDBUser:UserName Property Let", [&] {
        AskOwnership("CVLDBUser:UserName Property let");
        std::string user_name(name);
        std::string key = key_ == user_name_ ? user_name : key_;
        if (set_ != nullptr) set_->Rename(*this, user_name, "CVLDBUser:UserName Property Let");
        user_name_.swap(user_name);
        key_.swap(key);
    });
}

void CVLDBUser::UserFullName(std::string_view name) {
    Trap("CVLDBUser:UserFullName Property Let",
         [&] { SetText(full_name_, name, "CVLDBUser:UserFullName Property let"); });
}

void CVLDBUser::UserDescription(std::string_view description) {
    Trap("CVLDBUser:UserDescription Property Let",
         [&] { SetText(description_, description, "CVLDBUser:UserDescription Property let"); });
}

void CVLDBUser::UserDisabled(bool disabled) {
    static constexpr const char* kSource = "CVLDBUser:UserDisabled Property Let";
    Trap(kSource, [&] {
        AskOwnership(kSource);
        if (disabled == disabled_) return;
        disabled_ = disabled;
        (disabled ? OnUserDisable : OnUserEnable).Fire(user_name_);
    });
}

void CVLDBUser::CanRead(bool can) { SetRight(can_read_, can, "CVLDBUser:CanRead Property Let"); }

void CVLDBUser::CanReadWrite(bool can) {
    SetRight(can_read_write_, can, "CVLDBUser:CanReadWrite Property Let");
}

void CVLDBUser::CanDelete(bool can) {
    SetRight(can_delete_, can, "CVLDBUser:CanDelete Property Let");
}

void CVLDBUser::SetText(std::string& text, std::string_view value, const char* refusal_source) {
    AskOwnership(refusal_source);
    text = value;
}

void CVLDBUser::SetRight(bool& right, bool value, const char* source) {
    Trap(source, [&] {
        AskOwnership(source);
        right = value;
    });
}

void CVLDBUser::CVLUserNoteSet(std::shared_ptr<tavolin::CVLUserNoteSet> notes) {
    Trap("CVLDBUser:CVLUserNoteSet Property Set", [&] {
        if (!notes) RaiseRunTime(kObjectNotSet);
        TakeNotes(std::move(notes));
    });
}

void CVLDBUser::TakeNotes(std::shared_ptr<tavolin::CVLUserNoteSet> notes) {
    notes->JoinSession(session_);
    notes_ = std::move(notes);
}

void CVLDBUser::JoinSession(const std::shared_ptr<Session>& session) {
    session_ = session;
    notes_->JoinSession(session);
}

std::shared_ptr<CVLDBUser> CVLDBUser::Copy(std::shared_ptr<Session> session) const {
    auto copy = std::make_shared<CVLDBUser>(std::move(session));
    const auto state = MakeState([&](PropertyBagWriter& bag) { WriteProperties(bag); });
    PropertyBagReader bag(state);
    copy->ReadProperties(bag);
    return copy;
}

bool CVLDBUser::Equals(const std::shared_ptr<CVLDBUser>& other) const {
    return Trap("CVLDBUser:Equals Method", [&] {
        if (!other) RaiseRunTime(kObjectNotSet);
        return EqualFold(user_name_ + password_, other->user_name_ + other->password_);
    });
}

bool CVLDBUser::PasswordCorrect(std::string_view pwd) const {
    return Trap("CVLDBUser:PasswordCorrect Method", [&] { return EqualFold(pwd, password_); });
}

bool CVLDBUser::ChangePassword(std::string_view oldPWD, std::string_view newPWD) {
    static constexpr const char* kSource = "CVLDBUser:ChangePassword Method";
    return Trap(kSource, [&] {
        if (EqualFold(oldPWD, password_)) {
            Raise(CVLErrorNum::GetUserPasswordChangeError(), kSource,
                  Message("You Are Not Authorized To Change User Password!"));
        }
        password_ = newPWD;
        OnPasswordChange.Fire(user_name_);
        return true;
    });
}

void CVLDBUser::WriteProperties(PropertyBagWriter& bag) const {
    bag.Write("k", key_);
    bag.Write("un", user_name_);
    bag.Write("r", can_read_);
    bag.Write("w", can_read_write_);
    bag.Write("d", can_delete_);
    bag.Write("f", ScrambleText(password_));
    bag.Write("s", disabled_);
    bag.Write("uf", full_name_);
    bag.Write("ud", description_);
    bag.WriteObject("objn", [&] { notes_->WriteProperties(bag); });
}

void CVLDBUser::ReadProperties(PropertyBagReader& bag) {
    key_ = bag.ReadText("k");
    user_name_ = bag.ReadText("un");
    password_ = ScrambleText(bag.ReadText("f"));
    disabled_ = bag.ReadBool("s");
    full_name_ = bag.ReadText("uf");
    description_ = bag.ReadText("ud");
    can_read_ = bag.ReadBool("r");
    can_read_write_ = bag.ReadBool("w");
    can_delete_ = bag.ReadBool("d");
    bag.ReadObject("objn", [&] { notes_->ReadProperties(bag); });
}

}  // namespace tavolin
