// Who is logged on, and what he may do.
#include "tavolin/base/text.h"
#include "tavolin/engine/report.h"

namespace tavolin {

std::shared_ptr<CVLDBUser> CVLDBEngine::LogedOnUser() const { return authority_->user; }

void CVLDBEngine::LogedOnUser(std::shared_ptr<CVLDBUser> user) {
    authority_->user = std::move(user);
    authority_->permission = Undefined;
}

void CVLDBEngine::AskLogOn(const char* source) const {
    if (authority_->user) return;
    Raise(CVLErrorNum::GetUserLogedOnNotFoundError(), source,
          Message("User Should Log On To Be Able To Perform Any DataBase Activity!"));
}

bool CVLDBEngine::LogOn(std::string_view UserName, std::string_view UserPassword) {
    return Report("CVLDBEngine:LogOn Method", [&] {
        LogOnUser(UserName, UserPassword);
        OnUserLogOn.Fire(authority_->user);
        LogPending([&] { return Message(UserName, " Has Logged On"); }, true);
        return true;
    });
}

bool CVLDBEngine::LogOnAsUser(const std::shared_ptr<CVLDBUser>& user) {
    return Report("CVLDBEngine:LogOnAsUser Method", [&] {
        if (!user) RaiseRunTime(kObjectNotSet);
        const std::string name = user->UserName();
        const std::string password = user->UserPassword();
        return LogOn(name, password);
    });
}

void CVLDBEngine::LogOnUser(std::string_view name, std::string_view password) {
    auto user = std::make_shared<CVLDBUser>(session_);
    user->user_name_ = name;
    user->password_ = password;
    ReadRegistry();
    authority_->user = std::move(user);
    authority_->permission = Undefined;
}

bool CVLDBEngine::IsOwner(const CVLDBUser& user) const {
    const auto owner = database_->users->Find(database_->session->owner);
    return owner && EqualFold(owner->UserName() + owner->UserPassword(),
                              user.UserName() + user.UserPassword());
}

bool CVLDBEngine::IsDatabasePassword(std::string_view pwd) const {
    return EqualFold(pwd, database_->password);
}

bool CVLDBEngine::LogedOnIsOwner(const std::shared_ptr<CVLDBUser>& user) {
    static constexpr const char* kSource = "CVLDBEngine:LogedOnIsOwner Method";
    return Report(kSource, [&] {
        AskLogOn(kSource);
        AskOpen(kSource);
        if (!user) RaiseRunTime(kObjectNotSet);
        return IsOwner(*user);
    });
}

bool CVLDBEngine::PasswordCorrect(std::string_view pwd) {
    static constexpr const char* kSource = "CVLDBEngine:PasswordCorrect Method";
    return Report(kSource, [&] {
        AskLogOn(kSource);
        AskOpen(kSource);
        return IsDatabasePassword(pwd);
    });
}

bool CVLDBEngine::ChangePassword(std::string_view oldPWD, std::string_view newPWD) {
    static constexpr const char* kSource = "CVLDBEngine:ChangePassword Method";
    return Report(kSource, [&] {
        AskLogOn(kSource);
        AskOpen(kSource);
        if (!IsOwner(*authority_->user) && !IsDatabasePassword(oldPWD)) {
            Raise(CVLErrorNum::GetDBPasswordChangeError(), kSource,
                  Message("DataBase Password Did Not Change!\r\nCause: Old DataBase Password "
                          "Provided By ",
                          authority_->user->UserName(), " Is Incorrect!"));
        }
        database_->password = newPWD;
        Log([&] { return Message("DataBase ", database_->name, " Password Has Been Changed"); },
            false);
        return true;
    });
}

bool CVLDBEngine::UserExists(std::string_view UserName) {
    static constexpr const char* kSource = "CVLDBEngine:UserExists Method";
    return Report(kSource, [&] {
        AskLogOn(kSource);
        AskOpen(kSource);
        return !database_->users->CanAdd(UserName);
    });
}

std::shared_ptr<CVLDBUser> CVLDBEngine::CreateNewUser(std::string_view UserName,
                                                      std::string_view UserPassword, bool CanRead,
                                                      bool CanReadWrite, bool CanDelete,
                                                      std::string_view FullName,
                                                      std::string_view Description, bool Disabled) {
    static constexpr const char* kSource = "CVLDBEngine:CreateNewUser Method";
    return Report(kSource, [&] {
        AskLogOn(kSource);
        AskOpen(kSource);
        const auto tables = database_->tables;  // a handler may open another database
        auto user = WhenRaised(
            CVLErrorNum::GetUserAddError(),
            [&] {
                return database_->users->Add(UserName, UserPassword, CanRead, CanReadWrite,
                                             CanDelete);
            },
            [&] {
                Raise(CVLErrorNum::GetNewUserCreationError(), kSource,
                      Message("User: ", UserName,
                              " Cannot Be Created!\r\nCause: User Already Exists In DataBase"));
            });
        if (!FullName.empty()) user->UserFullName(FullName);
        if (!Description.empty()) user->UserDescription(Description);
        user->UserDisabled(Disabled);
        Log([&] { return Message("New User Created: ", UserName, " For ", database_->name); },
            tables, &LogType::logUserCreation);
        return user;
    });
}

std::shared_ptr<CVLDBUser> CVLDBEngine::CheckedUser(std::string_view name,
                                                    std::string_view password,
                                                    const char* source) const {
    auto user = database_->users->Find(name);
    if (!user) {
        Raise(CVLErrorNum::GetUserNotFoundError(), source,
              Message("User: ", name, " Does Not Exist!"));
    }
    if (!user->PasswordCorrect(password)) {
        Raise(CVLErrorNum::GetUserPasswordError(), source, Message("Incorrect Password!"));
    }
    return user;
}

std::shared_ptr<CVLDBUser> CVLDBEngine::GetUser(const UserArgument& user,
                                                std::string_view UserPassword) {
    static constexpr const char* kSource = "CVLDBEngine:GetUser Method";
    return Report(kSource, [&] {
        AskLogOn(kSource);
        AskOpen(kSource);
        if (!user.is_user()) return CheckedUser(user.name(), UserPassword, kSource);
        if (!user.user()) RaiseRunTime(kObjectNotSet);
        return CheckedUser(user.user()->UserName(), user.user()->UserPassword(), kSource);
    });
}

// The state that DBLegalUser gives a user who is not refused, or `Undefined`.
PermitStateEnum CVLDBEngine::RightsOf(const CVLDBUser& user) const {
    if (IsOwner(user)) return Ownership;
    const auto stored = database_->users->Find(user.UserName());
    if (user.UserDisabled() || (stored && stored->UserDisabled())) return Undefined;
    if (!stored || !EqualFold(stored->UserName() + stored->UserPassword(),
                              user.UserName() + user.UserPassword())) {
        return IsDatabasePassword(user.UserPassword()) ? ToRead : Undefined;
    }
    if (stored->CanDelete()) return ToDelete;
    if (stored->CanReadWrite()) return ToReadWrite;
    return stored->CanRead() ? ToRead : Undefined;
}

bool CVLDBEngine::DBLegalUser(const std::shared_ptr<CVLDBUser>& LogedUser,
                              PermitStateEnum NeededPermission) {
    static constexpr const char* kSource = "CVLDBEngine:DBLegalUser Method";
    return Report(kSource, [&] {
        AskLogOn(kSource);
        AskOpen(kSource);
        if (!LogedUser) RaiseRunTime(kObjectNotSet);
        CVLDBUser& user = *LogedUser;
        const PermitStateEnum rights = RightsOf(user);
        if (rights == Ownership) {
            authority_->permission = Ownership;
            return true;
        }
        authority_->permission = Undefined;
        const auto stored = database_->users->Find(user.UserName());
        if (user.UserDisabled() || (stored && stored->UserDisabled())) {
            Raise(CVLErrorNum::GetUserDisabledError(), kSource,
                  Message("Log In To DataBase Denied!\r\nCause: User Is Disabled!"));
        }
        if (stored && stored->Equals(LogedUser)) {
            CheckedUser(user.UserName(), user.UserPassword(), kSource);
            authority_->permission = rights;
            CheckPermission(NeededPermission, user, stored->CanRead(), stored->CanReadWrite(),
                            stored->CanDelete(), kSource);
            return true;
        }
        if (!IsDatabasePassword(user.UserPassword())) {
            Raise(CVLErrorNum::GetDBPasswordError(), kSource,
                  Message("Log In To DataBase Denied!\r\nCause: Incorrect DataBase Password!"));
        }
        user.can_read_ = true;
        authority_->permission = ToRead;
        CheckPermission(NeededPermission, user, true, false, false, kSource);
        return true;
    });
}

void CVLDBEngine::CheckPermission(PermitStateEnum needed, const CVLDBUser& user, bool can_read,
                                  bool can_write, bool can_delete, const char* source) const {
    switch (needed) {
        case ToRead:
        case ToLoad:
            if (can_read) return;
            Raise(CVLErrorNum::GetUserPermissionToRdError(), source,
                  Message("User Does Not Have Permission To Read!"));
        case ToReadWrite:
        case ToSave:
            if (can_write) return;
            Raise(CVLErrorNum::GetUserPermissionToRWError(), source,
                  Message("User Does Not Have Permission To Read/Write!"));
        case ToDelete:
            if (can_delete) return;
            Raise(CVLErrorNum::GetUserPermissionToDelError(), source,
                  Message("User Does Not Have Permission To Delete!"));
        case Ownership:
            Raise(CVLErrorNum::GetUserIsNotDBOwnerError(), source,
                  Message("User: ", user.UserName(), " Is Not The DataBase Owner"));
        case Undefined:
            return;
    }
    RaiseRunTime(kInvalidCall);  // no value of the enumeration
}

}  // namespace tavolin
