// The users of a database, in the order of adding, under their names without regard to case.
//
//     auto users = engine.CVLDBUserSet();
//     users->Add("bob", "secret", true, false, false);
//     for (const auto& user : users->NewEnum()) std::cout << user->UserName() << '\n';
//
// Add, Update and Remove ask for the permission state `Ownership` and otherwise raise
// GetUserIsNotDBOwnerError. A call that raises leaves the set as it was.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tavolin/base/event.h"
#include "tavolin/base/export.h"
#include "tavolin/model/index_key.h"
#include "tavolin/model/object_collection.h"
#include "tavolin/model/user.h"

namespace tavolin {

class TAVOLIN_API CVLDBUserSet {
  public:
    CVLDBUserSet();
    explicit CVLDBUserSet(std::shared_ptr<Session> session);
    ~CVLDBUserSet();
    CVLDBUserSet(const CVLDBUserSet&) = delete;
    CVLDBUserSet& operator=(const CVLDBUserSet&) = delete;

    Event<std::shared_ptr<CVLDBUser>> OnUserAdd;     // after the user was added
    Event<std::shared_ptr<CVLDBUser>> OnUserRemove;  // after the user was removed

    // True when no user has that name or position.
    bool CanAdd(IndexKey Key) const;

    // Adds a user at the end and returns him. A name that is taken, in any letter case, raises
    // GetUserAddError.
    std::shared_ptr<CVLDBUser> Add(std::string_view UserName, std::string_view UserPassword,
                                   bool CanRead, bool CanReadWrite, bool CanDelete,
                                   std::shared_ptr<CVLUserNoteSet> NoteSet = nullptr);

    // Changes the rights and the notes that are given; what is left out stays. An unknown user
    // raises GetUserUpDateError.
    std::shared_ptr<CVLDBUser> Update(IndexKey varKey, std::optional<bool> CanRead = {},
                                      std::optional<bool> CanReadWrite = {},
                                      std::optional<bool> CanDelete = {},
                                      std::shared_ptr<CVLUserNoteSet> NoteSet = nullptr);

    // The user at a position or of a name; none raises GetUserNotFoundError.
    std::shared_ptr<CVLDBUser> Item(IndexKey vntIndexKey) const;
    std::int32_t Count() const { return users_->Count(); }

    // None such raises GetUserNotFoundError.
    void Remove(IndexKey vntIndexKey);

    Enumerator<CVLDBUser> NewEnum() const { return Enumerator<CVLDBUser>(users_); }

    // All users as one byte array. Assigning replaces them, without events, or raises and changes
    // nothing.
    std::vector<std::uint8_t> ObjectState() const;
    void ObjectState(const std::vector<std::uint8_t>& state);

    // The user at the end, at the beginning, before or after a 1-based position; where there is
    // none, GetLastUserError, GetFirstUserError, GetPreviousUserError or GetNextUserError.
    std::shared_ptr<CVLDBUser> LastUser() const;
    std::shared_ptr<CVLDBUser> FirstUser() const;
    std::shared_ptr<CVLDBUser> PreviousUser(std::int32_t nKey) const;
    std::shared_ptr<CVLDBUser> NextUser(std::int32_t nKey) const;
    bool PreviousUserIsAvailable(std::int32_t nKey) const;
    bool NextUserIsAvailable(std::int32_t nKey) const;
    bool FirstUserIsAvailable() const;

  private:
    friend class CVLDBEngine;
    friend class CVLDBUser;
    using Users = ObjectCollection<CVLDBUser>;

    // Files an existing user, without asking for a right and without an event.
    void AddForOwners(std::shared_ptr<CVLDBUser> user);
    void Rename(const CVLDBUser& user, std::string_view name, const char* source);
    void AskOwnership(const char* source, const char* right) const;
    void JoinSession(std::shared_ptr<Session> session);
    void Detach();

    std::shared_ptr<Session> session_;
    std::shared_ptr<Users> users_ = std::make_shared<Users>();

  public:
    // Library-internal: the user of that name or nothing, and the set's stored form.
    std::shared_ptr<CVLDBUser> Find(std::string_view name) const;
    void WriteProperties(PropertyBagWriter& bag) const;
    void ReadProperties(PropertyBagReader& bag);
};

}  // namespace tavolin
