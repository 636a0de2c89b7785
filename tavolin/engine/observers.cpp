// Observers: added, told to look again, and removed at the host's wish alone.
#include "tavolin/engine/engine.h"

namespace tavolin {

void CVLDBEngine::AddObserver(std::shared_ptr<IUpdater> observer, std::string_view forUser) {
    observers_->Add(forUser, std::move(observer));
}

// A snapshot: an observer who removes and adds himself again would be met behind every place
// reached, without an end.
void CVLDBEngine::NotifyObservers() {
    const auto observers = observers_;  // an observer may end the engine
    const std::vector<std::shared_ptr<IUpdater>> present(observers->begin(), observers->end());
    for (const auto& observer : present) {
        if (observers->PositionOf(observer.get()) != 0) observer->Update();
    }
}

void CVLDBEngine::RemoveObserver(std::string_view forUser) { observers_->Remove(forUser); }

std::int32_t CVLDBEngine::ObserversCount() const { return observers_->Count(); }

}  // namespace tavolin
