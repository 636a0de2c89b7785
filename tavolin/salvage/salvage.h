// What is in a database file that may be damaged: what is wrong with it, and what can be saved of
// it.
//
//     SalvagedFile file("C:\\Data\\shop.cdb");
//     for (const Finding& finding : file.findings()) ...
//     if (file.AccessOf("ann", "secret") == SalvagedFile::Access::kGranted) {
//         WriteDatabaseFile("C:\\Data\\saved.cdb", file.State());
//     }
//
// The file is read and never written. Whatever its bytes are, nothing outside of them is read.
#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tavolin/base/byte_buffer.h"
#include "tavolin/base/export.h"
#include "tavolin/salvage/damaged_bag.h"
#include "tavolin/salvage/findings.h"

namespace tavolin {

class TAVOLIN_API SalvagedFile {
  public:
    enum class Kind {
        kDatabase,
        kRegistry,
        kNewer,    // in a newer version of the format
        kForeign,  // nothing in it looks like one of these
    };

    // Raises the file errors of FileSystem.
    explicit SalvagedFile(std::string_view path);
    ~SalvagedFile();

    Kind kind() const { return kind_; }
    // True when the bytes are what was saved and a database engine loads them.
    bool whole() const;
    // In the order of their places.
    const Findings& findings() const { return findings_; }

    std::size_t tables() const { return tables_.size(); }
    std::size_t records() const;
    std::size_t users() const;
    std::string_view owner() const;

    // Who may read what is left: whom the database itself would let read it. When its owner or his
    // password is lost, nobody can be told to be him, and State needs a new owner.
    enum class Access { kGranted, kRefused, kOwnerLost };
    Access AccessOf(std::string_view user, std::string_view password) const;

    // The state of a database of what can be read. Users keep their passwords and rights; a user
    // whose password is lost is disabled, and the database password, if lost, becomes the owner's.
    // A new owner who is among the users must be let in by AccessOf; where that was for the
    // password of the database, it becomes his own. What had to be changed is added to the
    // findings. Raises DamagedState when an engine would not load the result, which no file should
    // bring about.
    struct NewOwner {
        std::string name;
        std::string password;
    };
    ByteBuffer State(const std::optional<NewOwner>& new_owner = {});

  private:
    struct Table {
        StoredObject* object;
        std::string title;
        std::vector<DamagedBag::Record> records;
    };
    struct Keys;

    std::size_t Locate(std::span<const std::uint8_t> file, std::size_t& size);
    void Read();
    void ReadTables();
    void LookAround();
    Keys KeysOf(const Table& table) const;
    void LookAtKeys(const Table& table, const Keys& keys);
    void LookAtLinks(const Table& table, std::span<const Keys> keys);
    void CheckStrictly();
    static void LoadStrictly(std::span<const std::uint8_t> state);
    void Sort();
    const StoredObject* UserNamed(std::string_view name) const;
    void MendUsers(const std::optional<NewOwner>& new_owner);
    void MendTables();
    void WriteObject(PropertyBagWriter& bag, const StoredObject& object) const;
    void WriteRecords(PropertyBagWriter& bag, const StoredObject& set) const;
    void Note(Finding::Kind kind, std::size_t at, std::string where, std::string what);

    ByteBuffer file_;
    std::size_t array_at_ = 0;
    std::span<const std::uint8_t> array_;
    std::unique_ptr<DamagedBag> bag_;
    StoredObject root_;
    std::vector<Table> tables_;
    Kind kind_ = Kind::kForeign;
    Findings findings_;
};

}  // namespace tavolin
