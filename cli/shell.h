// A session: commands from a terminal or from elsewhere, one after another.
#pragma once

#include "cli/host.h"

namespace tavolin::cli {

// Reads and runs commands until the end of input or `quit` and returns the exit status. On a
// terminal a failure is shown and the session goes on. From elsewhere the first failing command
// ends it with that command's status; with keep_going it goes on and the highest status is
// returned. Changes that are not saved at the end are asked about on a terminal. Elsewhere, or when
// the terminal gives no answer, they are lost, which is a failure unless `quit --discard` or
// `quit!` says that it is meant.
int RunSession(Host& host);

}  // namespace tavolin::cli
