#include "tavolin/engine/engine.h"

#include "tavolin/engine/report.h"
#include "tavolin/persist/paths.h"

namespace tavolin {

CVLDBEngine::CVLDBEngine() : CVLDBEngine(ForAnotherEngine()) { RegisterSession(session_); }

CVLDBEngine::CVLDBEngine(ForAnotherEngine)
    : authority_(std::make_shared<Authority>()),
      session_(std::make_shared<Session>(authority_)),
      database_(NewDatabase()),
      owners_(std::make_shared<tavolin::CVLDBOwnerSet>()) {
    authority_->database_name = [this] { return DBName(); };
    authority_->is_own_file = [this](std::string_view path) { return IsOwnFile(path); };
}

CVLDBEngine::~CVLDBEngine() {
    UnregisterSession(session_);
    database_->session->Retire();
    // Objects that outlive the engine find nobody logged on and no tables.
    *authority_ = Authority();
}

void CVLDBEngine::ReportError(Error error, const char* context, OnFailure on_failure) {
    if (on_failure == OnFailure::kLog) LogFailure(error);
    RaiseError(error, context);
}

void CVLDBEngine::AskOpen(const char* source) const {
    if (database_->tables) return;
    Raise(CVLErrorNum::GetDBNotSetError(), source, Message("DataBase Is Not Set!"));
}

std::string CVLDBEngine::DBName() const { return database_->name; }

void CVLDBEngine::DBName(std::string_view name) {
    Report("CVLDBEngine:DBName Property Let", [&] {
        if (!name.empty() && !StaysInFolder(name)) RaiseRunTime(kBadFileName);
        database_->name = name;
    });
}

std::string CVLDBEngine::DBPath() const { return database_->path; }

void CVLDBEngine::DBPath(std::string_view path) {
    Report("CVLDBEngine:DBPath Property Let", [&] { database_->path = path; });
}

std::string CVLDBEngine::DBOwner() const { return database_->session->owner; }

Date CVLDBEngine::DBCreationDate() const { return database_->created; }

std::shared_ptr<CVLTableSet> CVLDBEngine::CVLTableSet() const { return database_->tables; }

void CVLDBEngine::CVLTableSet(std::shared_ptr<tavolin::CVLTableSet> tables) {
    static constexpr const char* kSource = "CVLDBEngine:CVLTableSet Property Set";
    Report(kSource, [&] {
        AskOpen(kSource);
        if (!tables) RaiseRunTime(kObjectNotSet);
        if (tables != database_->tables)
            database_->tables->JoinSession(database_->session->Retired());
        tables->JoinSession(database_->session);
        database_->tables = std::move(tables);
        authority_->tables = database_->tables;
    });
}

std::shared_ptr<CVLDBUserSet> CVLDBEngine::CVLDBUserSet() const { return database_->users; }

void CVLDBEngine::CVLDBUserSet(std::shared_ptr<tavolin::CVLDBUserSet> users) {
    static constexpr const char* kSource = "CVLDBEngine:CVLDBUserSet Property Set";
    Report(kSource, [&] {
        AskOpen(kSource);
        if (!users) RaiseRunTime(kObjectNotSet);
        if (users != database_->users) database_->users->JoinSession(database_->session->Retired());
        users->JoinSession(database_->session);
        database_->users = std::move(users);
    });
}

}  // namespace tavolin
