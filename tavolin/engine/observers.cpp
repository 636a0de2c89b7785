// Observers: added, told to look again, and removed at the host's wish alone.
#include "tavolin/engine/engine.h"

namespace tavolin {

void CVLDBEngine::AddObserver(std::shared_ptr<IUpdater> observer, std::string_view forUser) {
    if (!observer) RaiseRunTime(kObjectNotSet);
    observers_->Add(forUser, std::make_shared<Observation>(Observation{std::move(observer)}));
}

// A snapshot: an observer who removes and adds himself again would be met behind every place
// reached, without an end.
void CVLDBEngine::NotifyObservers() {
    const auto observers = observers_;  // an observer may end the engine
    const std::vector<std::shared_ptr<Observation>> present(observers->begin(), observers->end());
    for (const auto& observation : present) {
        if (observers->PositionOf(observation.get()) != 0) observation->observer->Update();
    }
}

void CVLDBEngine::RemoveObserver(std::string_view forUser) { observers_->Remove(forUser); }

std::int32_t CVLDBEngine::ObserversCount() const { return observers_->Count(); }

}  // namespace tavolin
