// Events: a member of an object that others connect handlers to.
//
//     auto connection = engine.OnRecordAdd.Connect([](const auto& record) { ... });
//     engine.OnRecordAdd.Disconnect(connection);
//
// Handlers run in the order of connecting, on the thread and inside the call that fired. A handler
// may connect and disconnect, itself included, and may call back into the library: firing walks a
// snapshot, and a handler that was disconnected meanwhile is passed over. What a handler throws
// leaves through the member that fired, after the change that it reports.
#pragma once

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
        handlers_->entries.push_back(std::make_shared<Entry>(Entry{id, std::move(handler), true}));
        return id;
    }

    // An unknown connection is no error.
    void Disconnect(EventConnection id) {
        if (!handlers_) return;
        std::erase_if(handlers_->entries, [id](const std::shared_ptr<Entry>& entry) {
            if (entry->id != id) return false;
            entry->connected = false;
            return true;
        });
    }

    bool HasHandlers() const { return handlers_ && !handlers_->entries.empty(); }

    void Fire(Args... args) const {
        if (!HasHandlers()) return;
        const auto snapshot = handlers_->entries;
        for (const auto& entry : snapshot) {
            if (entry->connected) entry->handler(args...);
        }
    }

  private:
    struct Entry {
        EventConnection id;
        Handler handler;
        bool connected;
    };
    struct Handlers {
        std::vector<std::shared_ptr<Entry>> entries;
        EventConnection last_id = 0;
    };
    std::shared_ptr<Handlers> handlers_;
};

}  // namespace tavolin
