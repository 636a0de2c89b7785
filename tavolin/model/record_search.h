// Looking for a text in the records of a collection.
#pragma once

#include <string_view>
#include <vector>

#include "tavolin/model/record_collection.h"

namespace tavolin {

// The records, in their order, that hold the text without regard to case: in one field, or for
// kNoField anywhere in all fields one behind the other. From 65,536 records on threads share the
// search, which have ended when it returns or throws.
std::vector<RecordHandle> RecordsWithText(const RecordCollection& records, std::string_view text,
                                          int field);

}  // namespace tavolin
