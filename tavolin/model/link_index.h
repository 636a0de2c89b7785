// Which tables of a set mention a name, and how often: in fields that link to the table of that
// name, and in slots for tables that link to them.
#pragma once

#include <algorithm>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "tavolin/base/fold_map.h"

namespace tavolin {

class CVLTable;

class LinkIndex {
  public:
    // `table` mentions `name` once more, or once less. No name is no mention.
    void Add(std::string_view name, CVLTable& table) {
        if (name.empty()) return;
        auto found = tables_.find(name);
        if (found == tables_.end()) found = tables_.emplace(name, Mentions()).first;
        ++found->second[&table];
    }
    void Remove(std::string_view name, CVLTable& table) {
        const auto found = tables_.find(name);
        if (found == tables_.end()) return;
        const auto mention = found->second.find(&table);
        if (mention == found->second.end()) return;
        if (--mention->second == 0) found->second.erase(mention);
        if (found->second.empty()) tables_.erase(found);
    }
    void Clear() { tables_.clear(); }

    // Whether is(table) is true for one of the tables that mention `name`, in no certain order.
    template <class Is>
    bool Any(std::string_view name, Is&& is) const {
        const auto found = tables_.find(name);
        if (found == tables_.end()) return false;
        return std::any_of(found->second.begin(), found->second.end(),
                           [&](const auto& mention) { return is(*mention.first); });
    }
    // All of them, for walks that change mentions.
    std::vector<CVLTable*> All(std::string_view name) const {
        std::vector<CVLTable*> all;
        Any(name, [&](CVLTable& table) {
            all.push_back(&table);
            return false;
        });
        return all;
    }

  private:
    using Mentions = std::unordered_map<CVLTable*, int>;
    FoldMap<Mentions> tables_;
};

}  // namespace tavolin
