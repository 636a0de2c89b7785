// A user of a database: a name, a password, rights and notes.
//
//     auto ann = engine.CreateNewUser("ann", "secret", true, true, false);
//     ann->UserFullName("Ann Example");
//
// Everything that changes a user's state asks for the permission state `Ownership` and otherwise
// raises GetUserIsNotDBOwnerError, the user unchanged. Reading asks for no right.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "tavolin/base/event.h"
#include "tavolin/base/export.h"

namespace tavolin {

class CVLDBEngine;
class CVLDBUserSet;
class CVLUserNoteSet;
class PropertyBagReader;
class PropertyBagWriter;
class Session;

class TAVOLIN_API CVLDBUser {
  public:
    CVLDBUser();
    explicit CVLDBUser(std::shared_ptr<Session> session);
    ~CVLDBUser();
    CVLDBUser(const CVLDBUser&) = delete;
    CVLDBUser& operator=(const CVLDBUser&) = delete;

    // Fired after the change, with the user's name.
    Event<std::string> OnPasswordChange;
    Event<std::string> OnUserDisable;  // when the user becomes disabled
    Event<std::string> OnUserEnable;   // when the user becomes enabled

    // A free text beside the name; the user's name when he is added to a set.
    const std::string& Key() const { return key_; }
    void Key(std::string_view key);

    // The log-on name. Renaming a user who stands in a set files him under the new name there, and
    // the database's owner under it as well; a name that another user of the set has, in any letter
    // case, raises GetUserAddError and changes nothing.
    const std::string& UserName() const { return user_name_; }
    void UserName(std::string_view name);

    const std::string& UserFullName() const { return full_name_; }
    void UserFullName(std::string_view name);
    const std::string& UserDescription() const { return description_; }
    void UserDescription(std::string_view description);

    // A disabled user is not let in by CVLDBEngine::DBLegalUser.
    bool UserDisabled() const { return disabled_; }
    void UserDisabled(bool disabled);

    bool CanRead() const { return can_read_; }
    void CanRead(bool can);
    bool CanReadWrite() const { return can_read_write_; }
    void CanReadWrite(bool can);
    bool CanDelete() const { return can_delete_; }
    void CanDelete(bool can);

    // Never nothing: an empty set is made when none was given. A set that is given asks for the
    // rights in this user's database from then on. Setting nothing raises 91.
    std::shared_ptr<tavolin::CVLUserNoteSet> CVLUserNoteSet() const { return notes_; }
    void CVLUserNoteSet(std::shared_ptr<tavolin::CVLUserNoteSet> notes);

    // True when this user's name followed by his password equals the other's, ignoring case. The
    // two are joined before they are compared: "ab" with "c" equals "a" with "bc".
    bool Equals(const std::shared_ptr<CVLDBUser>& other) const;

    // Ignores case.
    bool PasswordCorrect(std::string_view pwd) const;

    // Sets the password to `newPWD` and returns true when `oldPWD` is NOT the present password,
    // ignoring case; a caller who passes the present one is refused with
    // GetUserPasswordChangeError. The sense is inverted and stays so, because hosts depend on it.
    // No right is asked for.
    bool ChangePassword(std::string_view oldPWD, std::string_view newPWD);

  private:
    friend class CVLDBEngine;
    friend class CVLDBUserSet;

    const std::string& UserPassword() const { return password_; }
    void UserPassword(std::string_view password) { password_ = password; }
    void AskOwnership(const char* source) const;
    void SetText(std::string& text, std::string_view value, const char* refusal_source);
    void SetRight(bool& right, bool value, const char* source);
    void TakeNotes(std::shared_ptr<tavolin::CVLUserNoteSet> notes);
    void JoinSession(const std::shared_ptr<Session>& session);
    // A user of the same state, notes included, who stands in no set and whom nobody listens to.
    std::shared_ptr<CVLDBUser> Copy(std::shared_ptr<Session> session) const;

    std::shared_ptr<Session> session_;
    CVLDBUserSet* set_ = nullptr;  // the set that the user is filed in; it clears this when it goes
    std::string key_;
    std::string user_name_;
    std::string password_;
    std::string full_name_;
    std::string description_;
    bool disabled_ = false;
    bool can_read_ = false;
    bool can_read_write_ = false;
    bool can_delete_ = false;
    std::shared_ptr<tavolin::CVLUserNoteSet> notes_;

  public:
    // Library-internal: the user's stored form.
    void WriteProperties(PropertyBagWriter& bag) const;
    void ReadProperties(PropertyBagReader& bag);
};

}  // namespace tavolin
