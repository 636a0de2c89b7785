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

ThreadSessions& OfThisThread() {
    thread_local ThreadSessions sessions;
    return sessions;
}

}  // namespace

std::shared_ptr<Session> Session::Current() {
    auto& sessions = OfThisThread();
    if (auto running = sessions.running.lock()) return running;
    while (!sessions.engines.empty()) {
        if (auto newest = sessions.engines.back().lock()) return newest;
        sessions.engines.pop_back();
    }
    return std::make_shared<Session>(std::make_shared<Authority>());
}

std::string Session::UserName() const {
    return authority_->user ? authority_->user->UserName() : "---";
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
    std::erase_if(OfThisThread().engines, [&](const std::weak_ptr<Session>& candidate) {
        const auto living = candidate.lock();
        return !living || living == session;
    });
}

}  // namespace tavolin
