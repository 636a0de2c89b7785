// The order that sorting by a field puts records in.
//
// A record's sort text is the field followed by the other nine in their order, all of it without
// regard to case. Texts compare by UTF-16 code units; records with equal texts keep their order.
//
// Field 1 is told apart: there the text of a record that is still to be placed leaves field 1 out
// of the other nine, and that of one already placed does not. Records come in their order, each
// goes before the run of greater texts at the end, and so the result is no plain ascending order.
#pragma once

#include <span>
#include <vector>

#include "tavolin/model/record_arena.h"

namespace tavolin {

// Costs O(n log n) for n records, and no copies of texts that are ASCII. `field` is 0 to 9.
std::vector<RecordHandle> SortedByField(const RecordArena& arena,
                                        std::span<const RecordHandle> records, int field);

}  // namespace tavolin
