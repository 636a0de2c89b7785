// Events: a member of an object that others connect handlers to.
//
//     auto connection = engine.OnRecordAdd.Connect([](const auto& record) { ... });
//     engine.OnRecordAdd.Disconnect(connection);
//
// Handlers run in the order of connecting, on the thread and inside the call that fired. A handler
// may connect and disconnect, itself included, and may call back into the library: firing walks the
// handlers that there were when it began, and one that was disconnected meanwhile is passed over.
// What a handler throws leaves through the member that fired, after the change that it reports.
// Firing takes no memory beyond that for handing over the arguments.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace tavolin {

using EventConnection = std::uint64_t;

template <class... Args>
class Event {
  public:
    using Handler = std::function<void(Args...)>;

    Event() = default;
    Event(const Event&) = delete;
    Event& operator=(const Event&) = delete;

    EventConnection Connect(Handler handler) {
        if (!handlers_) handlers_ = std::make_shared<Handlers>();
        const EventConnection id = ++handlers_->last_id;
        handlers_->slots.push_back({id, std::make_shared<Entry>(Entry{std::move(handler), true})});
        return id;
    }

    // An unknown connection is no error.
    void Disconnect(EventConnection id) {
        if (!handlers_) return;
        auto& slots = handlers_->slots;
        const auto slot = std::lower_bound(
            slots.begin(), slots.end(), id,
            [](const Slot& each, EventConnection wanted) { return each.id < wanted; });
        if (slot == slots.end() || slot->id != id || !slot->entry) return;
        const auto gone = std::exchange(slot->entry, nullptr);  // whose end may come back here
        gone->connected = false;
        if (2 * ++handlers_->empty_slots <= slots.size() || handlers_->walks > 0) return;
        std::erase_if(slots, [](const Slot& each) { return !each.entry; });
        handlers_->empty_slots = 0;
    }

    bool HasHandlers() const {
        return handlers_ && handlers_->slots.size() > handlers_->empty_slots;
    }

    void Fire(const Args&... args) const {
        if (HasHandlers()) CallAll(args...);
    }

  private:
    void CallAll(Args... args) const {
        const Walk walk(handlers_);  // which a handler may take from the event
        const auto& slots = walk.handlers->slots;
        for (std::size_t i = 0, end = slots.size(); i < end; ++i) {
            const auto entry = slots[i].entry;
            if (entry && entry->connected) entry->handler(args...);
        }
    }

    struct Entry {
        Handler handler;
        bool connected;
    };
    // Of an entry that is gone the slot stays until half of them are empty.
    struct Slot {
        EventConnection id;
        std::shared_ptr<Entry> entry;
    };
    struct Handlers {
        std::vector<Slot> slots;  // in the order of their ids
        std::size_t empty_slots = 0;
        EventConnection last_id = 0;
        int walks = 0;  // that are under way, for which every slot stays at its place
    };
    struct Walk {
        explicit Walk(std::shared_ptr<Handlers> of) : handlers(std::move(of)) { ++handlers->walks; }
        ~Walk() { --handlers->walks; }
        const std::shared_ptr<Handlers> handlers;
    };
    std::shared_ptr<Handlers> handlers_;
};

}  // namespace tavolin
