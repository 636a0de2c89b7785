#include "tavolin/errors/stop_scope.h"

#include <utility>

#include "tavolin/errors/trap.h"

namespace tavolin {
namespace {

thread_local StopScope* innermost_stop_scope = nullptr;

}  // namespace

StopScope::StopScope(std::function<bool()> stop)
    : stop_(std::move(stop)), outer_(std::exchange(innermost_stop_scope, this)) {}

StopScope::~StopScope() { innermost_stop_scope = outer_; }

StopCheck::StopCheck() : scope_(innermost_stop_scope) {}

void StopCheck::AskScope() const {
    if (!scope_->stop_ || !scope_->stop_()) return;
    // What takes the work back must not be stopped in its turn.
    scope_->stop_ = nullptr;
    RaiseRunTime(kCancelled);
}

}  // namespace tavolin
