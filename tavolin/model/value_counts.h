// How often each of many texts is there, without regard to case.
//
//     ValueCounts counts;
//     counts.Add("Paris");
//     counts.Of("PARIS");    // 1
#pragma once

#include <cstdint>
#include <string_view>

#include "tavolin/base/fold_map.h"

namespace tavolin {

// Every member takes constant time. When memory runs out in one, nothing has changed.
class ValueCounts {
  public:
    void Add(std::string_view value) {
        const auto found = counts_.find(value);
        if (found != counts_.end()) {
            ++found->second;
        } else {
            counts_.emplace(value, 1);
        }
    }

    // Takes away what Add has put in.
    void Remove(std::string_view value) {
        const auto found = counts_.find(value);
        if (--found->second == 0) counts_.erase(found);
    }

    std::uint32_t Of(std::string_view value) const {
        const auto found = counts_.find(value);
        return found == counts_.end() ? 0 : found->second;
    }

  private:
    FoldMap<std::uint32_t> counts_;
};

}  // namespace tavolin
