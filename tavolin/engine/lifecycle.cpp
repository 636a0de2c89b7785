// Creating, loading, saving and deleting databases, and handing them to another owner.
#include <algorithm>
#include <optional>

#include "tavolin/base/clock.h"
#include "tavolin/base/text.h"
#include "tavolin/engine/report.h"
#include "tavolin/model/permission.h"
#include "tavolin/persist/database_file.h"
#include "tavolin/persist/file_system.h"
#include "tavolin/persist/paths.h"
#include "tavolin/persist/property_bag.h"

namespace tavolin {
namespace {

constexpr std::string_view kDefaultFullName = "Public Owner";
constexpr std::string_view kDefaultDescription = "Public Owns This DataBase";

// Runs body(); what it raises, the member's own refusals excepted, is given to replace(error),
// which raises what the member makes of it.
template <class Body, class Replace>
decltype(auto) WhenFails(Body&& body, Replace&& replace) {
    try {
        return body();
    } catch (...) {
        const Error error = CurrentError();
        if (!error.fresh()) replace(error);
        throw;
    }
}

// The name of a database file that a host gives, which stands in the folder that it gives.
std::string FileNameOf(std::string_view name) {
    if (!StaysInFolder(name)) RaiseRunTime(kBadFileName);
    std::string full(name);
    if (full.find('.') == std::string::npos) full.append(".").append(DefaultExtension());
    return full;
}

// The folder is kept without a "/" at its end, so that one file has one path whichever way it was
// given.
PathParts FolderAndName(std::string_view path) {
    PathParts parts = SplitPath(path);
    if (parts.dir.size() > 1 && parts.dir.back() == '/') parts.dir.pop_back();
    return parts;
}

[[noreturn]] void RaiseUnreadable(const char* source, const Error& cause) {
    Error error(CVLErrorNum::GetDBNotSetError(), source,
                Message("DataBase Cannot Be Read!\r\nCause: DataBase Might Be Empty!"));
    error.AddDetail(cause.detail().empty() ? cause.description() : cause.detail());
    throw error;
}

Date Today() {
    constexpr std::int64_t kDay = 24 * 60 * 60;
    const std::int64_t now = Now().seconds;
    return {now - (now % kDay + kDay) % kDay};
}

}  // namespace

void CVLDBEngine::AskToCreate(const char* source) const {
    if (authority_->user) return;
    Raise(CVLErrorNum::GetNewDBCreationError(), source,
          Message("User Should Log On To Create A New DataBase!"));
}

std::unique_ptr<Database> CVLDBEngine::NewDatabase() const {
    auto database = std::make_unique<Database>();
    database->session = std::make_shared<Session>(authority_);
    return database;
}

// Puts a database in the place of the open one, whose objects lose every right.
void CVLDBEngine::Install(std::unique_ptr<Database> database) {
    database_->session->Retire();
    database_ = std::move(database);
    authority_->tables = database_->tables;
}

// The same for a database other than the open one, whose transaction and pending lines end.
void CVLDBEngine::Open(std::unique_ptr<Database> database, std::string absolute_path,
                       std::optional<StateMark> mark) {
    listed_owner_ = database->session->owner;
    Install(std::move(database));
    file_ = std::move(absolute_path);
    file_mark_ = mark;
    tried_.clear();
    transaction_ = false;
    snapshot_.reset();
    std::erase_if(pending_, [](const PendingLine& line) { return !line.is_log_on; });
}

// Never lets a right reach data that it was not given for.
PermitStateEnum CVLDBEngine::Rechecked() const {
    if (authority_->permission == Undefined || !authority_->user) return Undefined;
    return RightsOf(*authority_->user);
}

// What the permission state becomes when that database takes the place of the open one. Known
// before it does, since finding out can fail.
PermitStateEnum CVLDBEngine::PermissionIn(std::unique_ptr<Database>& database) {
    struct ExchangeScope {
        ExchangeScope(std::unique_ptr<Database>& a, std::unique_ptr<Database>& b) : one(a), two(b) {
            one.swap(two);
        }
        ~ExchangeScope() { one.swap(two); }
        std::unique_ptr<Database>& one;
        std::unique_ptr<Database>& two;
    } const scope(database_, database);
    return Rechecked();
}

bool CVLDBEngine::IsOpenFile(std::string_view path) const {
    if (!database_->tables || file_.empty()) return false;
    return AbsolutePath(path) == file_ || IsOneFile(path, file_);
}

// Whether a path leads to a file that is there and is the open database's or its log.
bool CVLDBEngine::IsOwnFile(std::string_view path) const {
    if (!database_->tables) return false;
    return IsOneFile(path, LogPath()) || (!file_.empty() && IsOneFile(path, file_));
}

std::shared_ptr<CVLTableSet> CVLDBEngine::CreateNewDB(std::string_view DBShortName,
                                                      std::string_view DBDir,
                                                      std::string_view DBPwd,
                                                      std::string_view CreatorFullName) {
    static constexpr const char* kSource = "CVLDBEngine:CreateNewDB Method";
    const auto create = [&] {
        auto database = NewDatabase();
        database->name = FileNameOf(DBShortName);
        database->path = DBDir;
        std::string file = JoinPath(DBDir, database->name);
        if (FileExists(file)) {
            Raise(CVLErrorNum::GetNewDBCreationError(), kSource,
                  Message("DataBase Cannot Be Created! \r\nCause: This DataBase Exists!"));
        }
        // Who stands among the users of another engine's database stays there.
        const auto set = authority_->user->set_;
        const auto user = set == nullptr || set == database_->users.get()
                              ? authority_->user
                              : authority_->user->Copy(database->session);
        database->session->owner = user->UserName();
        database->password = DBPwd.empty() ? std::string_view(user->UserPassword()) : DBPwd;
        database->created = Now();
        database->tables = std::make_shared<tavolin::CVLTableSet>(database->session);
        database->users = std::make_shared<tavolin::CVLDBUserSet>(database->session);
        std::string absolute_path = AbsolutePath(file);
        ForgetUnsavedEntries();
        Register(*database);
        database->users->AddForOwners(user);
        user->can_read_ = user->can_read_write_ = user->can_delete_ = true;
        if (!CreatorFullName.empty()) user->full_name_ = CreatorFullName;
        Open(std::move(database), std::move(absolute_path), {});
        authority_->user = user;
        authority_->permission = Ownership;
        // A handler may open another one.
        const auto tables = database_->tables;
        const std::string name = database_->name;
        OnDBCreation.Fire(file, database_->created, user->UserName());
        Log([&] { return Message("New Database Created: ", file); }, false);
        Log([&] { return Message(user->UserName(), " Is The Owner Of ", name); }, false);
        return tables;
    };
    return Report(kSource, [&] {
        AskToCreate(kSource);
        return WhenFails(create, [](const Error& error) {
            throw error.As(CVLErrorNum::GetDBAddError(), kSource);
        });
    });
}

std::shared_ptr<CVLTableSet> CVLDBEngine::LoadDB(std::string_view DBPathName, std::string_view,
                                                 std::uint8_t FileNumber,
                                                 const std::shared_ptr<IUpdater>&) {
    static constexpr const char* kSource = "CVLDBEngine:loadDB Method";
    return Report(kSource, [&] {
        if (!authority_->user) {
            Raise(CVLErrorNum::GetUserLogedOnNotFoundError(), "CVLDBEngine:LoadDB Method",
                  Message("User Should Log On To Be Able To Open A DataBase!"));
        }
        if (!FileExists(DBPathName)) {
            Raise(CVLErrorNum::GetDBNotFoundError(), kSource,
                  Message("DataBase Cannot Be Read!\r\nCause: DataBase Does Not Exist!"));
        }
        StateMark mark;
        auto database = WhenFails(
            [&] {
                auto state = std::make_shared<ByteBuffer>(GetBinaryFile(DBPathName, FileNumber));
                mark = MarkOf(*state);
                return ReadState(std::move(state), BagSeal::kChecksum);
            },
            [](const Error& error) { RaiseUnreadable(kSource, error); });
        // A file that was moved is where it was found.
        const PathParts parts = FolderAndName(DBPathName);
        database->path = parts.dir;
        database->name = parts.name;
        const auto user = authority_->user;  // whatever handlers do
        std::string absolute_path = AbsolutePath(DBPathName);
        const PermitStateEnum permission = PermissionIn(database);
        ForgetUnsavedEntries();
        Register(*database);
        Open(std::move(database), std::move(absolute_path), mark);
        const bool same = authority_->user == user && authority_->permission != Undefined;
        authority_->permission = same ? permission : Undefined;
        Log([&] { return Message("Log On: ", user->UserName(), " To ", DBPathName); },
            database_->switches.logDBLogOn);
        return database_->tables;
    });
}

// What SaveDB calls the database and protects it with: its own until the file has been written.
class CVLDBEngine::Naming {
  public:
    explicit Naming(Database& database)
        : name(database.name), path(database.path), password(database.password) {}

    void Exchange(Database& database) {
        database.name.swap(name);
        database.path.swap(path);
        database.password.swap(password);
    }

    std::string name;
    std::string path;
    std::string password;
};

// The state that the database will have under that naming.
ByteBuffer CVLDBEngine::StateNamed(Naming& naming) const {
    struct ExchangeScope {
        ExchangeScope(Naming& by, Database& of) : naming(by), database(of) {
            naming.Exchange(database);
        }
        ~ExchangeScope() { naming.Exchange(database); }
        Naming& naming;
        Database& database;
    } const scope(naming, *database_);
    return ObjectState(BagSeal::kChecksum);
}

bool CVLDBEngine::SaveDB(std::string_view DBDir, std::string_view newDBName, std::string_view DBPwd,
                         bool compact, std::uint8_t FileNumber) {
    static constexpr const char* kSource = "CVLDBEngine:SaveDB Method";
    return Report(kSource, [&] {
        AskLogOn(kSource);
        AskOpen(kSource);
        Naming naming(*database_);
        if (!DBDir.empty() &&
            !EqualFold(WithTrailingSeparator(DBDir), WithTrailingSeparator(naming.path))) {
            naming.path = WithTrailingSeparator(DBDir);
        }
        if (!newDBName.empty() && !EqualFold(newDBName, naming.name)) {
            const std::string name = FileNameOf(newDBName);
            if (!EqualFold(name, naming.name)) naming.name = name;
        }
        const std::string file = JoinPath(naming.path, naming.name);
        AskToReplace(file, kSource);
        AskWrite(*session_, kSource);
        if (!DBPwd.empty() && session_->IsOwner()) naming.password = DBPwd;
        std::string absolute_path = AbsolutePath(file);
        const bool own = IsOpenFile(file);
        WriteState(StateNamed(naming), file, compact, FileNumber, kSource);
        naming.Exchange(*database_);
        file_ = std::move(absolute_path);
        std::optional<Error> registry_failure;
        try {
            const bool new_owner = !EqualFold(listed_owner_, DBOwner());
            // A former file still has the owner that it was saved with.
            if (new_owner && !own) ForgetUnsavedEntries();
            Register(*database_);
            // The owner may have got another name.
            if (new_owner) MoveEntry(listed_owner_, DBOwner(), *database_);
            listed_owner_ = DBOwner();
            WriteRegistry();
        } catch (...) {
            registry_failure = CurrentError();
            registry_failure->AddDetail("the database has been saved; the owner registry " +
                                        RegistryPath() + " has not: " + registry_failure->detail());
        }
        LogPending([&] { return Message("DATABASE SAVED! As ", file); });
        FlushPending();
        if (registry_failure) throw *registry_failure;
        return true;
    });
}

// Asked twice: before anything is done, and again when the file is about to be exchanged.
void CVLDBEngine::AskToReplace(const std::string& path, const char* source) const {
    const bool own = IsOpenFile(path);
    const bool changed = own && keep_changes_of_others_ && FileChangedByOthers();
    const bool others =
        !own && FileSystem::Current().Exists(path) && !HoldsTriedSave(AbsolutePath(path));
    if (changed || others) {
        Error error(CVLErrorNum::GetDBOverwriteError(), source,
                    Message("DataBase Cannot Be Saved!\r\nCause: Another DataBase With Same Name "
                            "Was Detected And Cannot Be Overwritten!"));
        if (changed) error.AddDetail(path + " was changed by somebody else since it was loaded");
        throw error;
    }
}

bool CVLDBEngine::FileChangedByOthers() const {
    return Trap("CVLDBEngine:FileChangedByOthers Method", [&] {
        if (!database_->tables || file_.empty()) return false;
        const auto now = ReadMark(file_);
        return now && now != file_mark_ && !HoldsTriedSave(file_, now);
    });
}

// Whether the file is as a save left it that failed in its last step. Its mark is read if it is not
// given.
bool CVLDBEngine::HoldsTriedSave(const std::string& file, std::optional<StateMark> mark) const {
    return std::any_of(tried_.begin(), tried_.end(), [&](const TriedSave& save) {
        if (save.file != file && !IsOneFile(save.file, file)) return false;
        if (!mark) mark = ReadMark(file);
        return mark == save.mark;
    });
}

void CVLDBEngine::WriteState(const ByteBuffer& state, const std::string& path, bool compact,
                             std::uint8_t FileNumber, const char* source) {
    const StateMark mark = MarkOf(state);
    const auto last_look = [&] {
        AskToReplace(path, source);
        tried_.push_back({IsOpenFile(path) ? file_ : AbsolutePath(path), mark});
    };
    PrintToBinaryFile(state, path, FileNumber, compact, last_look);
    file_mark_ = mark;
    tried_.clear();
}

std::shared_ptr<CVLDBEngine> CVLDBEngine::GetDB(std::string_view DBPathName, std::string_view DBPwd,
                                                std::uint8_t FileNumber) {
    static constexpr const char* kSource = "CVLDBEngine:GetDB Method";
    return Report(kSource, [&] {
        AskLogOn(kSource);
        std::shared_ptr<CVLDBEngine> engine(new CVLDBEngine(ForAnotherEngine()));
        return WhenFails(
            [&] {
                engine->LogOnAsUser(authority_->user);
                engine->LoadDB(DBPathName, DBPwd, FileNumber);
                return engine;
            },
            [](const Error& error) { RaiseUnreadable(kSource, error); });
    });
}

bool CVLDBEngine::DeleteDB(std::string_view DBPathName) {
    static constexpr const char* kSource = "CVLDBEngine:DeleteDB Method";
    return Report(kSource, [&] {
        AskLogOn(kSource);
        const auto user = authority_->user;
        const auto other = GetDB(DBPathName);
        if (!other->IsOwner(*user)) {
            Raise(CVLErrorNum::GetUserIsNotDBOwnerError(), kSource,
                  Message("User: ", user->UserName(),
                          " Is Not The DataBase Owner\r\n"
                          "Thus Does Not Have The Right To Delete\r\n"));
        }
        const std::string path(DBPathName);
        const bool own = IsOpenFile(path);
        const auto tables = database_->tables;  // a handler may open another database
        std::optional<Error> log_failure;
        ForOtherDatabase([&] { log_failure = DeleteFiles(path, *other); });
        if (own && database_->tables == tables) {
            file_.clear();
            file_mark_.reset();
        }
        OnDBDeletion.Fire(path, Today(), user->UserName());
        Log([&] { return Message("DataBase ", path, " Deleted By ", user->UserName()); }, false);
        const auto owners = owners_;  // a handler may log somebody on
        ForOtherDatabase([&] { owners->Refresh(); });
        if (log_failure) throw *log_failure;
        return true;
    });
}

// Takes the database out of the registry first, and puts it back if its file cannot be deleted.
// What keeps the log from being deleted is given back: by then the database is gone.
std::optional<Error> CVLDBEngine::DeleteFiles(const std::string& path, const CVLDBEngine& opened) {
    FileSystem& files = FileSystem::Current();
    RegistryChange change{false, false, opened.DBOwner(), opened.DBPath(), opened.DBName()};
    const bool listed = ChangeRegistry(change);
    WhenFails(
        [&] {
            WriteRegistry();
            files.Delete(files.FollowLink(path));
        },
        [&](const Error& error) {
            change.added = true;
            if (listed) ChangeRegistry(change);
            if (files.Exists(RegistryPath())) WriteRegistry();
            throw error;
        });
    try {
        const std::string log = opened.LogPath();
        // The name of a log is made from the database's, and may be that of another database.
        if (files.Exists(log) && !IsDatabaseFile(log)) files.Delete(log);
        return {};
    } catch (...) {
        return CurrentError();
    }
}

bool CVLDBEngine::ChangeOwner(std::string_view newOwnerName, std::string_view newOwnerPwd,
                              std::string_view newOwnerFullName,
                              std::string_view newOwnerDescription, std::string_view DBPathName) {
    static constexpr const char* kSource = "CVLDBEngine:ChangeOwner Method";
    return Report(kSource, [&] {
        AskToCreate(kSource);
        const bool current = EqualFold(DBPathName, "Current") || IsOpenFile(DBPathName);
        if (current) AskOpen(kSource);
        const auto other = current ? nullptr : GetDB(DBPathName);
        CVLDBEngine& target = current ? *this : *other;
        if (!target.IsOwner(*authority_->user)) {
            Raise(CVLErrorNum::GetDBOwnerChangeError(), kSource,
                  Message("User: ", authority_->user->UserName(),
                          " Is Not The DataBase Owner\r\n"
                          "Thus Does Not Have The Right To Change Ownership!"));
        }
        if (newOwnerName.empty()) RaiseRunTime(kInvalidCall);
        const std::string new_owner(newOwnerName);
        const std::string old_owner = target.DBOwner();
        target.MakeOwner(new_owner, newOwnerPwd, newOwnerFullName, newOwnerDescription);
        if (current) authority_->permission = Rechecked();
        // An engine that is not kept has to put its change on the disk now.
        if (other) {
            other->keep_changes_of_others_ = keep_changes_of_others_;
            other->WriteState(other->ObjectState(BagSeal::kChecksum), std::string(DBPathName),
                              false, 0, kSource);
        }
        const std::string name = target.DBName();
        const bool logged = target.database_->switches.logOwnerChange;
        const auto tables = database_->tables;  // a handler may open another database
        if (current) {
            MoveEntry(old_owner, new_owner, *database_);
        } else {
            ForOtherDatabase([&] {
                MoveEntry(old_owner, new_owner, *other->database_);
                WriteRegistry();
            });
        }
        OnOwnerChange.Fire(new_owner);
        const auto message = [&] {
            return Message("OwnerShip Of DataBase ", name, " Has Been Changed From ", old_owner,
                           " To ", new_owner);
        };
        Log(message, current && logged && database_->tables == tables);
        if (other && logged) AtTheSide([&] { other->WriteLog(other->LogLine(message())); });
        return true;
    });
}

// Makes the user the owner of the open database, adding him to its users if he is not there.
void CVLDBEngine::MakeOwner(const std::string& name, std::string_view password,
                            std::string_view full_name, std::string_view description) {
    auto& users = *database_->users;
    auto user = users.Find(name);
    const bool is_new = user == nullptr;
    if (is_new) {
        user = std::make_shared<CVLDBUser>(database_->session);
        user->user_name_ = name;
        users.AddForOwners(user);
    }
    if (is_new || !password.empty()) user->password_ = password;
    if (is_new || full_name != kDefaultFullName) user->full_name_ = full_name;
    if (is_new || description != kDefaultDescription) user->description_ = description;
    user->can_read_ = user->can_read_write_ = user->can_delete_ = true;
    database_->session->owner = name;
}

}  // namespace tavolin
