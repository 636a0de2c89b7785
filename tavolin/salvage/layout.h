// What the stored objects hold, key by key in the order in which they are written: enough to read a
// state whose key table is lost, or of which pieces are missing.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tavolin/persist/property_bag.h"

namespace tavolin {

struct Layout;

struct Slot {
    std::string key;
    PropertyType type;  // kFalse for a Boolean
    std::string words;  // for people: "the owner's name"
    const Layout* inside = nullptr;
    bool optional = false;
};

struct Layout {
    std::string_view name;  // for people: "table"
    std::vector<Slot> slots;
    std::string_view title;  // the key whose text names the object
};

const Layout& DatabaseLayout();
const Layout& RegistryLayout();
const Layout& TableLayout();
const Layout& RecordSetLayout();
const Layout& UserSetLayout();
const Layout& UserLayout();

}  // namespace tavolin
