// Where imported rows go, and how all of them leave again when one is refused.
#pragma once

#include <array>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "cli/host.h"

namespace tavolin::cli {

class ImportTarget {
  public:
    explicit ImportTarget(PrimaryKeyType key) : key_(key) {}
    virtual ~ImportTarget() = default;
    ImportTarget(const ImportTarget&) = delete;
    ImportTarget& operator=(const ImportTarget&) = delete;

    // The fields that make up a record's key.
    PrimaryKeyType key() const { return key_; }
    // Whether a record has that key.
    virtual bool Holds(std::string_view key) const = 0;
    // Adds a record; raises what the engine raises.
    virtual void Add(const FieldTexts& values) = 0;
    // Makes what was added a part of the database.
    virtual void Finish() = 0;
    // Takes what was added back.
    virtual void Undo() = 0;

  private:
    PrimaryKeyType key_;
};

// A table that is there. Its records and those of the tables that its links lead to are remembered
// in a session; one command on its own saves nothing if it fails. To put them back asks for no
// right, unlike deleting the new ones.
std::unique_ptr<ImportTarget> ExistingTable(Host& host, std::shared_ptr<CVLTable> table);

// A table that is made when all rows are there. They are collected beside the database, so that its
// log has a line for the table and none for each record.
std::unique_ptr<ImportTarget> NewTable(Host& host, std::string name,
                                       std::vector<std::string> fields,
                                       const std::array<int, 4>& key);

}  // namespace tavolin::cli
