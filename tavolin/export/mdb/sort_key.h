// Keys of names, as text indexes hold them: two names with equal keys are one name, whatever the
// case of their letters.
#pragma once

#include <optional>
#include <string_view>

#include "tavolin/export/mdb/page.h"

namespace tavolin::mdb {

// Nothing when the name has a character without a place in the order.
std::optional<Bytes> SortKey(std::u16string_view name);

}  // namespace tavolin::mdb
