#include "tavolin/model/user_set.h"

#include "tavolin/base/text.h"
#include "tavolin/errors/error_num.h"
#include "tavolin/errors/trap.h"
#include "tavolin/model/navigation.h"
#include "tavolin/model/session.h"
#include "tavolin/model/stored_collection.h"
#include "tavolin/model/user_note_set.h"

namespace tavolin {
namespace {

constexpr NavigationTexts kUserNavigation = {"CVLDBUserSet",
                                             "User Not Found Error ",
                                             CVLErrorNum::GetFirstUserError(),
                                             CVLErrorNum::GetLastUserError(),
                                             CVLErrorNum::GetPreviousUserError(),
                                             CVLErrorNum::GetNextUserError(),
                                             true};

[[noreturn]] void RaiseUserTaken(const char* source) {
    Raise(CVLErrorNum::GetUserAddError(), source,
          Message("The User That Is Being Added Already Exists In DataBase!"));
}

[[noreturn]] void RaiseUserNotFound(const char* source) {
    Raise(CVLErrorNum::GetUserNotFoundError(), source, Message("User Not Found!"));
}

}  // namespace

CVLDBUserSet::CVLDBUserSet() : CVLDBUserSet(Session::Current()) {}

CVLDBUserSet::CVLDBUserSet(std::shared_ptr<Session> session) : session_(std::move(session)) {}

CVLDBUserSet::~CVLDBUserSet() { Detach(); }

void CVLDBUserSet::Detach() {
    users_->ForEach([this](const std::shared_ptr<CVLDBUser>& user) {
        if (user->set_ == this) user->set_ = nullptr;
    });
}

void CVLDBUserSet::AskOwnership(const char* source, const char* right) const {
    if (session_->IsOwner()) return;
    Raise(CVLErrorNum::GetUserIsNotDBOwnerError(), source,
          Message("User: ", session_->UserName(),
                  " Is Not The DataBase Owner!\r\nThus Does Not Have The Right To ",
                  std::string_view(right)));
}

bool CVLDBUserSet::CanAdd(IndexKey Key) const {
    return Trap("CVLDBUserSet:CanAdd Method", [&] { return users_->Find(Key) == nullptr; });
}

std::shared_ptr<CVLDBUser> CVLDBUserSet::Add(std::string_view UserName,
                                             std::string_view UserPassword, bool CanRead,
                                             bool CanReadWrite, bool CanDelete,
                                             std::shared_ptr<CVLUserNoteSet> NoteSet) {
    static constexpr const char* kSource = "CVLDBUserSet:Add Method";
    return Trap(kSource, [&] {
        AskOwnership(kSource, "Create Users");
        auto user = std::make_shared<CVLDBUser>(session_);
        user->key_ = UserName;
        user->user_name_ = UserName;
        user->password_ = UserPassword;
        user->can_read_ = CanRead;
        user->can_read_write_ = CanReadWrite;
        user->can_delete_ = CanDelete;
        if (users_->Contains(UserName)) RaiseUserTaken(kSource);
        users_->Add(UserName, user);
        user->set_ = this;
        if (NoteSet) user->TakeNotes(std::move(NoteSet));
        OnUserAdd.Fire(user);
        return user;
    });
}

void CVLDBUserSet::AddForOwners(std::shared_ptr<CVLDBUser> user) {
    static constexpr const char* kSource = "CVLDBUserSet:AddForOwners Method";
    Trap(kSource, [&] {
        if (users_->Contains(user->UserName())) RaiseUserTaken(kSource);
        users_->Add(user->UserName(), user);
        user->key_ = user->UserName();
        user->JoinSession(session_);
        user->set_ = this;
    });
}

std::shared_ptr<CVLDBUser> CVLDBUserSet::Update(IndexKey varKey, std::optional<bool> CanRead,
                                                std::optional<bool> CanReadWrite,
                                                std::optional<bool> CanDelete,
                                                std::shared_ptr<CVLUserNoteSet> NoteSet) {
    static constexpr const char* kSource = "CVLDBUserSet:Update Method";
    return Trap(kSource, [&] {
        AskOwnership(kSource, "UpDate Users");
        auto user = users_->Find(varKey);
        if (!user) {
            Raise(CVLErrorNum::GetUserUpDateError(), kSource, Message("User Does Not Exist!"));
        }
        user->can_read_ = CanRead.value_or(user->can_read_);
        user->can_read_write_ = CanReadWrite.value_or(user->can_read_write_);
        user->can_delete_ = CanDelete.value_or(user->can_delete_);
        if (NoteSet) user->TakeNotes(std::move(NoteSet));
        return user;
    });
}

std::shared_ptr<CVLDBUser> CVLDBUserSet::Item(IndexKey vntIndexKey) const {
    static constexpr const char* kSource = "CVLDBUserSet:Item Property Get";
    return Trap(kSource, [&] {
        auto user = users_->Find(vntIndexKey);
        if (!user) RaiseUserNotFound(kSource);
        return user;
    });
}

void CVLDBUserSet::Remove(IndexKey vntIndexKey) {
    static constexpr const char* kSource = "CVLDBUserSet:Remove Method";
    Trap(kSource, [&] {
        AskOwnership(kSource, "Delete Users");
        if (!users_->Find(vntIndexKey)) RaiseUserNotFound(kSource);
        const auto user = users_->Remove(vntIndexKey);
        if (user->set_ == this) user->set_ = nullptr;
        OnUserRemove.Fire(user);
    });
}

void CVLDBUserSet::Rename(const CVLDBUser& user, std::string_view name, const char* source) {
    const auto other = users_->Find(name);
    if (other && other.get() != &user) RaiseUserTaken(source);
    const bool is_owner = EqualFold(session_->owner, user.UserName());
    std::string owner = is_owner ? std::string(name) : session_->owner;
    if (users_->Find(user.UserName()).get() == &user) users_->Rename(user.UserName(), name);
    session_->owner.swap(owner);
}

void CVLDBUserSet::JoinSession(std::shared_ptr<Session> session) {
    session_ = std::move(session);
    users_->ForEach(
        [this](const std::shared_ptr<CVLDBUser>& user) { user->JoinSession(session_); });
}

std::vector<std::uint8_t> CVLDBUserSet::ObjectState() const {
    return Trap("CVLDBUserSet:ObjectState Property Get",
                [&] { return MakeState([&](PropertyBagWriter& bag) { WriteProperties(bag); }); });
}

void CVLDBUserSet::ObjectState(const std::vector<std::uint8_t>& state) {
    Trap("CVLDBUserSet:ObjectState Property Let", [&] {
        PropertyBagReader bag(state);
        ReadProperties(bag);
    });
}

std::shared_ptr<CVLDBUser> CVLDBUserSet::Find(std::string_view name) const {
    return users_->Find(name);
}

void CVLDBUserSet::WriteProperties(PropertyBagWriter& bag) const {
    WriteCollection(bag, *users_, "UserCount", "User");
}

void CVLDBUserSet::ReadProperties(PropertyBagReader& bag) {
    auto users = ReadCollection<CVLDBUser>(
        bag, "UserCount", "User", [this] { return std::make_shared<CVLDBUser>(session_); },
        [](const CVLDBUser& user) { return std::string_view(user.UserName()); });
    Detach();
    users_ = std::move(users);
    users_->ForEach([this](const std::shared_ptr<CVLDBUser>& user) { user->set_ = this; });
}

std::shared_ptr<CVLDBUser> CVLDBUserSet::LastUser() const {
    return Navigation(*this, kUserNavigation).Last();
}

std::shared_ptr<CVLDBUser> CVLDBUserSet::FirstUser() const {
    return Navigation(*this, kUserNavigation).First();
}

std::shared_ptr<CVLDBUser> CVLDBUserSet::PreviousUser(std::int32_t nKey) const {
    return Navigation(*this, kUserNavigation).Previous(nKey);
}

std::shared_ptr<CVLDBUser> CVLDBUserSet::NextUser(std::int32_t nKey) const {
    return Navigation(*this, kUserNavigation).Next(nKey);
}

bool CVLDBUserSet::PreviousUserIsAvailable(std::int32_t nKey) const {
    return Navigation(*this, kUserNavigation).PreviousIsAvailable(nKey);
}

bool CVLDBUserSet::NextUserIsAvailable(std::int32_t nKey) const {
    return Navigation(*this, kUserNavigation).NextIsAvailable(nKey);
}

bool CVLDBUserSet::FirstUserIsAvailable() const {
    return Navigation(*this, kUserNavigation).FirstIsAvailable();
}

}  // namespace tavolin
