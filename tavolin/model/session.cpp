#include "tavolin/model/session.h"

#include <algorithm>
#include <vector>

#include "tavolin/model/user.h"

namespace tavolin {
namespace {

struct ThreadSessions {
    std::vector<std::weak_ptr<Session>> engines;  // the newest last
    std::weak_ptr<Session> running;               // that of the engine member being run
};

// A plain pointer: not every run time destroys a thread's objects before it takes their memory
// away. It is given back with the thread's last engine.
ThreadSessions*& Slot() {
    thread_local ThreadSessions* sessions = nullptr;
    return sessions;
}

ThreadSessions& OfThisThread() {
    if (!Slot()) Slot() = new ThreadSessions;
    return *Slot();
}

// The current one, or nothing.
std::shared_ptr<Session> OfAnEngine() {
    if (!Slot()) return nullptr;
    auto& sessions = OfThisThread();
    if (auto running = sessions.running.lock()) return running;
    while (!sessions.engines.empty()) {
        if (auto newest = sessions.engines.back().lock()) return newest;
        sessions.engines.pop_back();
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
    : previous_(OfThisThread().running) {
    OfThisThread().running = session;
}

SessionScope::~SessionScope() { OfThisThread().running = previous_; }

void RegisterSession(const std::shared_ptr<Session>& session) {
    OfThisThread().engines.push_back(session);
}

void UnregisterSession(const std::shared_ptr<Session>& session) {
    if (!Slot()) return;
    std::erase_if(OfThisThread().engines, [&](const std::weak_ptr<Session>& candidate) {
        const auto living = candidate.lock();
        return !living || living == session;
    });
    if (!Slot()->engines.empty() || !Slot()->running.expired()) return;
    delete Slot();
    Slot() = nullptr;
}

}  // namespace tavolin
