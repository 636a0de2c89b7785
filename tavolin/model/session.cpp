#include "tavolin/model/session.h"

#include <algorithm>
#include <vector>

#include "tavolin/model/user.h"

namespace tavolin {
namespace {

using Engines = std::vector<std::weak_ptr<Session>>;  // the newest last

// A plain pointer: not every run time destroys a thread's objects before it takes their memory
// away. It is given back with the thread's last engine.
thread_local constinit Engines* engines_of_thread = nullptr;

// That of the engine member being run.
thread_local constinit const SessionScope* innermost_scope = nullptr;

// The current one, or nothing.
std::shared_ptr<Session> OfAnEngine() {
    if (innermost_scope != nullptr) {
        if (auto running = innermost_scope->session()) return running;
    }
    Engines* const engines = engines_of_thread;
    while (engines != nullptr && !engines->empty()) {
        if (auto newest = engines->back().lock()) return newest;
        engines->pop_back();
    }
    return nullptr;
}

}  // namespace

std::shared_ptr<Session> Session::Current() {
    auto session = OfAnEngine();
    return session ? session : std::make_shared<Session>(nullptr);
}

const Authority& Session::Newest() {
    static const Authority kNobody;
    const auto session = OfAnEngine();
    return session && session->authority_ ? *session->authority_ : kNobody;
}

std::string Session::UserName() const {
    return authority().user ? authority().user->UserName() : "---";
}

SessionScope::SessionScope(const std::shared_ptr<Session>& session)
    : session_(session), outer_(innermost_scope) {
    innermost_scope = this;
}

SessionScope::~SessionScope() { innermost_scope = outer_; }

void RegisterSession(const std::shared_ptr<Session>& session) {
    if (engines_of_thread == nullptr) engines_of_thread = new Engines;
    engines_of_thread->push_back(session);
}

void UnregisterSession(const std::shared_ptr<Session>& session) {
    if (engines_of_thread == nullptr) return;
    std::erase_if(*engines_of_thread, [&](const std::weak_ptr<Session>& candidate) {
        const auto living = candidate.lock();
        return !living || living == session;
    });
    if (!engines_of_thread->empty()) return;
    delete engines_of_thread;
    engines_of_thread = nullptr;
}

}  // namespace tavolin
