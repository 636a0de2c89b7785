// The objects that hosts hold of an arena's records, found by the record.
//
//     objects.ReserveOneMore();
//     objects.Insert(object);      // a HostedObject, with its record
//     objects.Find(record);        // object
//     objects.Erase(object);
//
// Every record that is handed out passes through here twice. The objects carry the links of the
// table themselves, so that one comes and goes in a few instructions however many there are.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace tavolin {

// An object's part of the table.
class HostedObject {
  public:
    HostedObject(const HostedObject&) = delete;
    HostedObject& operator=(const HostedObject&) = delete;

  protected:
    explicit HostedObject(std::uint32_t record) : record_(record) {}
    ~HostedObject() = default;

    const std::uint32_t record_;

  private:
    friend class HostedObjects;

    bool last_ = false;
    HostedObject* next_ = nullptr;
};

class HostedObjects {
  public:
    // The record's object, or nullptr.
    HostedObject* Find(std::uint32_t record) const {
        if (size_ == 0) return nullptr;
        HostedObject* object = heads_[Home(record)];
        while (object != nullptr && object->record_ != record) object = object->next_;
        return object;
    }

    // After it, one Insert cannot fail. A failure to get memory changes nothing.
    void ReserveOneMore() {
        if (2 * size_ >= heads_.size()) Grow();
    }

    // Of a record that has none yet.
    void Insert(HostedObject& object) noexcept {
        Link(object);
        ++size_;
    }

    // Notes that perhaps nothing but the object holds the record; false when there is no object.
    bool MarkLast(std::uint32_t record) noexcept {
        HostedObject* const object = Find(record);
        return object != nullptr && (object->last_ = true);
    }

    // Whether the object had that mark. One that was not inserted is passed over.
    bool Erase(HostedObject& object) noexcept {
        if (size_ == 0) return false;
        HostedObject** at = &heads_[Home(object.record_)];
        while (*at != &object) {
            if (*at == nullptr) return false;
            at = &(*at)->next_;
        }
        *at = object.next_;
        // What many objects needed is not kept for few.
        if (--size_ == 0 && heads_.size() > kKept) std::vector<HostedObject*>().swap(heads_);
        return object.last_;
    }

  private:
    static constexpr std::size_t kSmallest = 8;
    static constexpr std::size_t kKept = 1024;

    std::size_t Home(std::uint32_t record) const {
        return record * std::uint64_t{0x9E3779B97F4A7C15} >> shift_;
    }

    void Link(HostedObject& object) noexcept {
        HostedObject*& head = heads_[Home(object.record_)];
        object.next_ = std::exchange(head, &object);
    }

    void Grow() {
        std::vector<HostedObject*> old(heads_.empty() ? kSmallest : 2 * heads_.size());
        old.swap(heads_);
        shift_ = 64 - std::countr_zero(heads_.size());
        for (HostedObject* first : old) {
            while (first != nullptr) Link(*std::exchange(first, first->next_));
        }
    }

    std::vector<HostedObject*> heads_;  // none, or a power of two of them
    int shift_ = 0;                     // what brings a product of 64 bits down to their number
    std::size_t size_ = 0;
};

}  // namespace tavolin
