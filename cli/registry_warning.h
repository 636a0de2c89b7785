// Saving when the owner registry cannot be written: the database is on the disk all the same.
#pragma once

#include <functional>

#include "tavolin/engine/engine.h"

namespace tavolin::cli {

// Calls `save`, which saves the engine's database. A failure that came after the database was
// written is printed to the error stream as a warning; any other one passes.
void WarnOfRegistry(const CVLDBEngine& engine, const std::function<void()>& save);

}  // namespace tavolin::cli
