// Users and their rights.
#include <algorithm>
#include <iterator>
#include <optional>

#include "cli/commands.h"
#include "cli/failure.h"
#include "cli/fields.h"
#include "cli/paths.h"
#include "tavolin/base/text.h"

namespace tavolin::cli {
namespace {

const char* YesNo(bool value) { return value ? "yes" : "no"; }

bool AsksForPassword(const Arguments& words) {
    return words.Has("--password-file") || words.Has("--ask-password") ||
           words.Has("--no-password");
}

bool ChangesNothing(const Arguments& words) {
    constexpr const char* kOptions[] = {"--read", "--write",     "--delete",     "--disabled",
                                        "--name", "--full-name", "--description"};
    return !AsksForPassword(words) &&
           std::none_of(std::begin(kOptions), std::end(kOptions),
                        [&](const char* option) { return words.Has(option); });
}

void CheckName(const std::string& name) {
    if (name.empty()) throw UsageError("a user needs a name");
    RequireUtf8(name);
}

}  // namespace

// The library changes a password for whoever does not know the old one.
void SetPassword(CVLDBUser& user, const std::string& password) {
    user.ChangePassword(user.PasswordCorrect("") ? "another" : "", password);
}

void OwnersCommand(Host& host, const Arguments& words) {
    const auto owner = words.Find("USER");
    auto names = owner ? host.engine().GetArrayOwnedDBs(*owner) : host.engine().GetArrayOwners();
    names.pop_back();  // the empty one at the end
    Results results = host.Answer({owner ? "Database" : "Owner"});
    for (const std::string& name : names) results.Add({owner ? MachinePath(name) : name});
    results.Finish(owner ? "database" : "owner");
}

void UsersCommand(Host& host, const Arguments&) {
    Results results = host.Answer({"User", "Read", "Write", "Delete", "Disabled", "Full name"});
    for (const auto& user : host.engine().CVLDBUserSet()->NewEnum()) {
        results.Add({user->UserName(), YesNo(user->CanRead()), YesNo(user->CanReadWrite()),
                     YesNo(user->CanDelete()), YesNo(user->UserDisabled()), user->UserFullName()});
    }
    results.Finish("user");
}

void UserCommand(Host& host, const Arguments& words) {
    const auto user = host.engine().CVLDBUserSet()->Item(words["USER"]);
    host.AnswerOne({{"name", user->UserName()},
                    {"full name", user->UserFullName()},
                    {"description", user->UserDescription()},
                    {"read", YesNo(user->CanRead())},
                    {"write", YesNo(user->CanReadWrite())},
                    {"delete", YesNo(user->CanDelete())},
                    {"disabled", YesNo(user->UserDisabled())}});
}

void AddUserCommand(Host& host, const Arguments& words) {
    const std::string& name = words["NAME"];
    CheckName(name);
    const std::string password = host.NewPassword(words, "of " + name);
    host.engine().CreateNewUser(name, password, words.Has("--read"), words.Has("--write"),
                                words.Has("--delete"), words.Get("--full-name"),
                                words.Get("--description"), words.Has("--disabled"));
    host.Changed();
    host.Note("user " + name + " added");
}

void SetUserCommand(Host& host, const Arguments& words) {
    if (ChangesNothing(words)) throw UsageError("there is nothing to change");
    if (const auto name = words.Find("--name")) CheckName(*name);
    const auto user = host.engine().CVLDBUserSet()->Item(words["USER"]);
    const bool oneself = EqualFold(user->UserName(), host.user());
    std::optional<std::string> password;
    if (AsksForPassword(words)) password = host.NewPassword(words, "of " + user->UserName());
    // The name first: it is the one thing that can be refused for its value.
    if (const auto name = words.Find("--name")) user->UserName(*name);
    host.Changed();
    if (const auto can = words.Switch("--read")) user->CanRead(*can);
    if (const auto can = words.Switch("--write")) user->CanReadWrite(*can);
    if (const auto can = words.Switch("--delete")) user->CanDelete(*can);
    if (const auto disabled = words.Switch("--disabled")) user->UserDisabled(*disabled);
    if (const auto name = words.Find("--full-name")) user->UserFullName(*name);
    if (const auto text = words.Find("--description")) user->UserDescription(*text);
    if (password) SetPassword(*user, *password);
    if (oneself && (words.Has("--name") || password)) {
        host.ActAs(user->UserName(), password.value_or(host.password()));
    }
    host.Note("user " + user->UserName() + " changed");
}

void RemoveUserCommand(Host& host, const Arguments& words) {
    const std::string& name = words["USER"];
    const auto users = host.engine().CVLDBUserSet();
    const std::string removed = users->Item(name)->UserName();
    if (EqualFold(removed, host.engine().DBOwner())) {
        throw CommandFailure(removed + " is the owner: hand the database over first");
    }
    host.Confirm(words, "Remove the user " + removed + "?");
    users->Remove(name);
    host.Changed();
    host.Note("user " + removed + " removed");
}

}  // namespace tavolin::cli
