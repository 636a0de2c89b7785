// A hash table under texts without regard to case, in which a view is looked up without a copy.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>

#include "tavolin/base/text.h"

namespace tavolin {

struct FoldHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const { return HashFold(text); }
};

struct FoldEqual {
    using is_transparent = void;
    bool operator()(std::string_view a, std::string_view b) const { return EqualFold(a, b); }
};

template <class Value>
using FoldMap = std::unordered_map<std::string, Value, FoldHash, FoldEqual>;

}  // namespace tavolin
