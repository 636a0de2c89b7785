#include "tavolin/export/mdb/replacing.h"

#include "tavolin/export/mdb/writer.h"

namespace tavolin::mdb {

void AskToReplace(std::string_view path) { const Writer looks_at_it(path); }

}  // namespace tavolin::mdb
