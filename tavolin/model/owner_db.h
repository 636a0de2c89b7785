// A database that an owner has: where its file is.
#pragma once

#include <string>
#include <string_view>

#include "tavolin/base/event.h"
#include "tavolin/base/export.h"

namespace tavolin {

class PropertyBagReader;
class PropertyBagWriter;

class TAVOLIN_API CVLOwnerDB {
  public:
    Event<std::string> OnDBDirChange;   // fired by every assignment of DBDir, with the new value
    Event<std::string> OnDBNameChange;  // fired by every assignment of DBName

    // The full path: the directory, a backslash, the name. Assigning DBName or DBDir later does not
    // change it.
    const std::string& Key() const { return key_; }
    void Key(std::string_view key) { key_ = key; }

    const std::string& DBName() const { return name_; }
    void DBName(std::string_view name);

    // As it was given, with or without a backslash at its end.
    const std::string& DBDir() const { return directory_; }
    void DBDir(std::string_view directory);

    // Library-internal: the stored form.
    void WriteProperties(PropertyBagWriter& bag) const;
    void ReadProperties(PropertyBagReader& bag);

  private:
    std::string key_;
    std::string name_;
    std::string directory_;
};

}  // namespace tavolin
