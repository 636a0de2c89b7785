// What the engine's sources share.
#pragma once

#include <utility>

#include "tavolin/engine/database.h"
#include "tavolin/engine/engine.h"
#include "tavolin/errors/trap.h"
#include "tavolin/model/session.h"

namespace tavolin {

template <class Body>
decltype(auto) CVLDBEngine::Report(const char* context, Body&& body, OnFailure on_failure) {
    const SessionScope scope(session_);
    try {
        return body();
    } catch (...) {
        ReportError(CurrentError(), context, on_failure);
    }
}

// What is done at the side of what a member has done, or has failed to do, already: where there is
// no memory for it, or a handler throws, the rest of it is left out, and the member's outcome stays
// what it is.
template <class Body>
void AtTheSide(Body&& body) noexcept {
    try {
        body();
    } catch (...) {
    }
}

// A line for what message() tells.
template <class Make>
void CVLDBEngine::Log(Make&& message, bool switched_on) noexcept {
    AtTheSide([&] { LogMessage(message(), switched_on); });
}

// A line about the database of those tables, whose file it reaches if the activity is switched on:
// not that of another one which a handler has opened meanwhile.
template <class Make>
void CVLDBEngine::Log(Make&& message, const std::shared_ptr<tavolin::CVLTableSet>& tables,
                      bool LogType::*activity) noexcept {
    Log(message, database_->tables == tables && database_->switches.*activity);
}

template <class Make>
void CVLDBEngine::LogPending(Make&& message, bool is_log_on) noexcept {
    AtTheSide([&] { LogPendingMessage(message(), is_log_on); });
}

}  // namespace tavolin
