// Changes that Ctrl-C takes back: the library stops in their middle and undoes what was done.
#pragma once

#include <string>
#include <utility>

#include "cli/failure.h"
#include "cli/host.h"
#include "cli/terminal.h"
#include "cli/waiting.h"
#include "tavolin/errors/stop_scope.h"

namespace tavolin::cli {

// Calls `body`, which changes the database and may fail in its middle, and shows on a terminal that
// it does `what`. Cancelled after Ctrl-C.
template <class Body>
void ChangeStoppably(Host& host, std::string what, Body&& body) {
    const Waiting waiting(std::move(what));
    const StopScope scope([] { return Interrupted(); });
    try {
        body();
    } catch (const Error& error) {
        if (error.number() == kCancelled) throw Cancelled();
        host.Changed();
        throw;
    }
    host.Changed();
}

}  // namespace tavolin::cli
