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

// Runs body() and, when it raises this number, replace() instead, which raises what the member
// makes of it. Everything else passes.
template <class Body, class Replace>
decltype(auto) WhenRaised(std::int32_t number, Body&& body, Replace&& replace) {
    try {
        return body();
    } catch (const Error& error) {
        if (error.number() == number) replace();
        throw;
    }
}

}  // namespace tavolin
