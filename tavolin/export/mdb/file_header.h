// The first page of a file.
#pragma once

#include "tavolin/export/mdb/page.h"

namespace tavolin::mdb {

// The same for every file: General sort order, code page 1252, no password.
Page FileHeaderPage();

}  // namespace tavolin::mdb
