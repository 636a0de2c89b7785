// The tables that every file has for the programs of the format: what objects there are, who may do
// what with them, and queries and relations, of which files written here have none.
#pragma once

#include "tavolin/export/mdb/definition.h"

namespace tavolin::mdb {

inline constexpr PageNumber kObjectsPage = 2;
inline constexpr PageNumber kRightsPage = 3;
inline constexpr PageNumber kQueriesPage = 4;
inline constexpr PageNumber kRelationsPage = 5;
// All usage maps of the system tables are rows of this page.
inline constexpr PageNumber kSystemMapsPage = 6;
inline constexpr std::size_t kSystemMaps = 31;

// Columns, indexes and places of usage maps; the counts are zero.
Definition ObjectsDefinition();
Definition RightsDefinition();
Definition QueriesDefinition();
Definition RelationsDefinition();

}  // namespace tavolin::mdb
