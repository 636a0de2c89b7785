// What stands in an owner registry, apart from the objects that it stands in: so that what one
// engine changed since it read the file can be told, and done to the file as others left it.
#pragma once

#include <compare>
#include <set>
#include <string>
#include <string_view>

namespace tavolin {

class CVLDBOwnerSet;

class RegistryEntries {
  public:
    RegistryEntries() = default;
    explicit RegistryEntries(const CVLDBOwnerSet& owners);

    // Without or with that database, whatever it is called there.
    void Forget(std::string_view owner, std::string_view path);
    void Remember(std::string_view owner, std::string_view path);

    // Does to `file` what makes these entries of the ones that were there `before`; `now` is the
    // set that these were taken from. Entries of others stay, and so does an owner who has some.
    void ApplyChanges(const RegistryEntries& before, const CVLDBOwnerSet& now,
                      CVLDBOwnerSet& file) const;

  private:
    // Owner and path without regard to case. An entry without a path is the owner himself.
    struct Entry {
        std::string owner;
        std::string path;
        std::string name;
        std::string dir;
        auto operator<=>(const Entry&) const = default;
    };
    std::set<Entry> entries_;
};

}  // namespace tavolin
