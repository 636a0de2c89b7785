// A new database that a dump is read into: an engine of its own, which nothing reaches the disk of
// before Save.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "tavolin/engine/engine.h"

namespace tavolin::cli {

struct RestoredHead {
    std::optional<Date> created;
    std::optional<std::string> owner;
    std::optional<bool> password_empty;
    std::optional<LogType> log;
};

struct RestoredAttachment {
    std::uint64_t line = 0;
    attachmentEnum kind = Miscellenius;
    std::int32_t number = 0;
    std::string path;
    std::string key;
    bool again = false;
};

struct RestoredRecord {
    std::uint64_t line = 0;
    std::int32_t number = 0;
    std::array<std::string, kFieldCount> fields;
    bool has_key = false;
    bool again = false;  // another record is found under the key
    std::string key;
    std::vector<RestoredAttachment> attachments;
};

class RestoredDatabase {
  public:
    // The password that the owner gets, once it is known who that is.
    using PasswordOf = std::function<std::string(const std::string& owner)>;

    RestoredDatabase(std::string path, std::optional<std::string> database_password,
                     PasswordOf password_of)
        : path_(std::move(path)),
          database_password_(std::move(database_password)),
          password_of_(std::move(password_of)) {}

    CVLDBEngine& engine() { return engine_; }
    CVLDBUser& user() { return *user_; }
    CVLTable& table() { return *table_; }

    // Everything below raises DumpError for what the database cannot hold.

    void Create(const RestoredHead& head);

    // The user that lines after this one tell about. Users other than the owner get a password
    // that nobody knows.
    CVLDBUser& AddUser(std::uint64_t line, const std::string& name);
    void AddNote(std::uint64_t line, std::int32_t number, const std::string& date,
                 const std::string& text, bool again);

    void AddTable(std::uint64_t line, const std::string& name, bool linked);
    // Before the first record. A table of that name may come later.
    void SetLink(std::uint64_t line, int field, const std::string& target, bool active,
                 bool missing);
    void SetLinkedBy(std::uint64_t line, int slot, const std::string& table, bool missing);
    void AddRecord(const RestoredRecord& record);

    // When everything is there: checks what tables mention each other, and saves. The owner
    // registry is the one thing that may fail then with the database on the disk.
    void Save();
    std::int64_t records() const { return records_; }

  private:
    struct Mention {
        std::uint64_t line;
        std::string table;
        bool missing;
    };

    void FinishTable();
    void Put(const RestoredRecord& record);
    void PutUnder(std::string_view key, const RestoredRecord& record);
    std::shared_ptr<CVLAttachmentSet> Attachments(const RestoredRecord& record) const;

    std::string path_;
    std::optional<std::string> database_password_;
    PasswordOf password_of_;
    CVLDBEngine engine_;
    std::string owner_;
    std::string owner_password_;
    LogType log_;
    std::shared_ptr<CVLDBUserSet> users_;
    std::shared_ptr<CVLDBUser> user_;
    std::set<std::string> user_notes_;  // the dates of the user's notes, folded
    std::shared_ptr<CVLTable> table_;
    std::shared_ptr<CVLRecordSet> table_records_;
    TableEnum table_type_ = isPrimaryTable;
    std::vector<Mention> mentions_;
    std::int64_t records_ = 0;
};

}  // namespace tavolin::cli
