// Users and their rights.
#include "cli/commands.h"
#include "cli/failure.h"

namespace tavolin::cli {
namespace {

const char* YesNo(bool value) { return value ? "yes" : "no"; }

}  // namespace

void UsersCommand(Host& host, const Arguments&) {
    Results results = host.Answer({"User", "Read", "Write", "Delete", "Disabled", "Full name"});
    for (const auto& user : host.engine().CVLDBUserSet()->NewEnum()) {
        results.Add({user->UserName(), YesNo(user->CanRead()), YesNo(user->CanReadWrite()),
                     YesNo(user->CanDelete()), YesNo(user->UserDisabled()), user->UserFullName()});
    }
    results.Finish("user");
}

void UserCommand(Host& host, const Arguments& words) {
    const auto user = host.engine().CVLDBUserSet()->Item(words["NAME"]);
    Results results = host.Answer({"Property", "Value"}, Host::Fit::kWhole);
    results.Add({"name", user->UserName()});
    results.Add({"full name", user->UserFullName()});
    results.Add({"description", user->UserDescription()});
    results.Add({"read", YesNo(user->CanRead())});
    results.Add({"write", YesNo(user->CanReadWrite())});
    results.Add({"delete", YesNo(user->CanDelete())});
    results.Add({"disabled", YesNo(user->UserDisabled())});
    results.Finish();
}

void AddUserCommand(Host& host, const Arguments& words) {
    const std::string& name = words["NAME"];
    const std::string password = host.NewPassword(words, "of " + name);
    host.engine().CreateNewUser(name, password, words.Has("--read"), words.Has("--write"),
                                words.Has("--delete"), words.Get("--full-name"),
                                words.Get("--description"), words.Has("--disabled"));
    host.Changed();
    host.Note("user " + name + " added");
}

void SetUserCommand(Host& host, const Arguments& words) {
    const auto user = host.engine().CVLDBUserSet()->Item(words["NAME"]);
    // The name first: it is the one thing that can be refused for its value.
    if (const auto name = words.Find("--name")) user->UserName(*name);
    host.Changed();
    if (const auto can = words.Switch("--read")) user->CanRead(*can);
    if (const auto can = words.Switch("--write")) user->CanReadWrite(*can);
    if (const auto can = words.Switch("--delete")) user->CanDelete(*can);
    if (const auto disabled = words.Switch("--disabled")) user->UserDisabled(*disabled);
    if (const auto name = words.Find("--full-name")) user->UserFullName(*name);
    if (const auto text = words.Find("--description")) user->UserDescription(*text);
    host.Note("user " + user->UserName() + " changed");
}

void RemoveUserCommand(Host& host, const Arguments& words) {
    const std::string& name = words["NAME"];
    const auto users = host.engine().CVLDBUserSet();
    host.Confirm(words, "Remove the user " + users->Item(name)->UserName() + "?");
    users->Remove(name);
    host.Changed();
    host.Note("user " + name + " removed");
}

}  // namespace tavolin::cli
