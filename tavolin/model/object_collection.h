// The collection of shared objects under every small set: a KeyedCollection that owns its elements,
// and the enumerator that hosts get of it.
//
//     auto users = std::make_shared<ObjectCollection<User>>();
//     users->Add("Ann", ann);
//     users->Item("ANN")->Name();
//     for (const auto& user : Enumerator<User>(users)) users->Remove(user->Name());
//
// Elements with and without a key may stand side by side. References to elements hold until the
// next change of the collection.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tavolin/base/text.h"
#include "tavolin/errors/trap.h"
#include "tavolin/model/index_key.h"
#include "tavolin/model/key_index.h"
#include "tavolin/model/keyed_collection.h"

namespace tavolin {

template <class T>
class Enumerator;

template <class T>
class ObjectCollection {
  public:
    using Element = std::shared_ptr<T>;
    class Iterator;

    ObjectCollection() = default;
    ObjectCollection(const ObjectCollection&) = delete;
    ObjectCollection& operator=(const ObjectCollection&) = delete;

    std::int32_t Count() const { return static_cast<std::int32_t>(elements_.size()); }

    // Puts an object in, at the end unless `placement` says otherwise. Raises 5 when the placement
    // names both places or one that is not there, 91 for no object, 457 when the key is taken in
    // any letter case. Nothing has been added after a failure. An empty key is a key like any
    // other.
    void Add(std::string_view key, Element object, const Placement& placement = {}) {
        Put(Slot{std::move(object), std::string(key), 0, HashFold(key), true}, placement);
    }
    // The same for an object without a key.
    void AddKeyless(Element object, const Placement& placement = {}) {
        Put(Slot{std::move(object), {}, 0, 0, false}, placement);
    }

    // Raises 5 for a key and 9 for a position that is not there.
    const Element& Item(const IndexKey& which) const { return SlotOf(Existing(which)).object; }

    // The same with nullptr for what is not there.
    Element Find(const IndexKey& which) const {
        const std::uint32_t handle = elements_.Find(which);
        return handle == kNoHandle ? nullptr : SlotOf(handle).object;
    }
    bool Contains(std::string_view key) const { return elements_.FindKey(key) != kNoHandle; }

    // Takes an element out and gives it back. Raises as Item does. The object is not destroyed
    // before the collection is whole again.
    Element Remove(const IndexKey& which) {
        const std::uint32_t handle = Existing(which);
        const std::uint32_t identity = HashPointer(SlotOf(handle).object.get());
        elements_.Remove(handle);
        identities_.Remove(identity, handle);
        return elements_.store().Release(handle);
    }

    // Gives an element another key; its position stays. Raises 5 when `old_key` is not there, 457
    // when another element has `new_key`; nothing has changed then. The letter case alone may
    // change.
    void Rename(std::string_view old_key, std::string_view new_key) {
        const std::uint32_t handle = Existing(old_key);
        std::string key(new_key);
        const std::uint32_t hash = HashFold(key);
        elements_.ChangeKey(handle, new_key, [&] {
            Slot& slot = elements_.store().slots[handle];
            slot.hash = hash;
            slot.key.swap(key);
        });
    }

    // The key of an object as it was given. Raises 5 when the object is not in the collection;
    // empty for one without a key. Of an object that is in twice, the key of either.
    const std::string& KeyOf(const T* object) const {
        const std::uint32_t handle = HandleOf(object);
        if (handle == kNoHandle) RaiseRunTime(kInvalidCall);
        return SlotOf(handle).key;
    }
    // The 1-based position of an object, or 0 when it is not in the collection.
    std::int32_t PositionOf(const T* object) const {
        const std::uint32_t handle = HandleOf(object);
        return handle == kNoHandle ? 0 : static_cast<std::int32_t>(elements_.PositionOf(handle));
    }

    // Takes all elements out. They are destroyed when the collection is empty already.
    void Clear() {
        Slots dying;
        std::swap(dying, elements_.store());
        elements_.Clear();
        identities_.Clear();
    }

    // Calls body(element) in order, as a cursor walks: the body may change the collection.
    template <class Body>
    void ForEach(Body&& body) const {
        Cursor cursor(elements_);
        for (std::uint32_t handle; (handle = cursor.Next()) != kNoHandle;) {
            const Element element = SlotOf(handle).object;
            body(element);
        }
    }

    // For walks that leave the collection as it is.
    Iterator begin() const { return Iterator(this, 1); }
    Iterator end() const { return Iterator(this, elements_.size() + 1); }

  private:
    friend class Enumerator<T>;

    struct Slot {
        Element object;
        std::string key;
        std::uint32_t leaf = 0;
        std::uint32_t hash = 0;
        bool keyed = false;
    };

    // The elements' home; a handle is the number of a slot.
    struct Slots {
        std::uint32_t Leaf(std::uint32_t handle) const { return slots[handle].leaf; }
        void SetLeaf(std::uint32_t handle, std::uint32_t leaf) { slots[handle].leaf = leaf; }
        bool Keyed(std::uint32_t handle) const { return slots[handle].keyed; }
        std::uint32_t KeyHash(std::uint32_t handle) const { return slots[handle].hash; }
        bool KeyEquals(std::uint32_t handle, std::string_view key) const {
            return EqualFold(slots[handle].key, key);
        }
        bool SameKey(std::uint32_t a, std::uint32_t b) const {
            return EqualFold(slots[a].key, slots[b].key);
        }
        void DropKey(std::uint32_t handle) { slots[handle].keyed = false; }

        std::uint32_t Take(Slot slot) {
            if (free.empty()) {
                // Room to give every slot back, so that Release cannot fail.
                if (free.capacity() <= slots.size()) free.reserve(2 * slots.size() + 4);
                slots.push_back(std::move(slot));
                return static_cast<std::uint32_t>(slots.size() - 1);
            }
            const std::uint32_t handle = free.back();
            slots[handle] = std::move(slot);
            free.pop_back();
            return handle;
        }
        Element Release(std::uint32_t handle) {
            Element object = std::move(slots[handle].object);
            slots[handle] = Slot();
            free.push_back(handle);
            return object;
        }

        std::vector<Slot> slots;
        std::vector<std::uint32_t> free;
    };
    using Elements = KeyedCollection<Slots>;
    using Cursor = typename Elements::Cursor;

    // Gives a slot back unless the element has come into the collection.
    struct Claim {
        Slots& slots;
        std::uint32_t handle;
        bool kept = false;
        ~Claim() {
            if (!kept) slots.Release(handle);
        }
    };

    void Put(Slot slot, const Placement& placement) {
        if (!slot.object) RaiseRunTime(kObjectNotSet);
        // Now, because a new slot may move the key that the placement looks at.
        const std::uint32_t position = elements_.Resolve(placement);
        const std::uint32_t identity = HashPointer(slot.object.get());
        identities_.ReserveOneMore();
        Claim claim{elements_.store(), elements_.store().Take(std::move(slot))};
        elements_.AddAt(position, claim.handle);
        identities_.Insert(identity, claim.handle);
        claim.kept = true;
    }

    std::uint32_t Existing(const IndexKey& which) const {
        const std::uint32_t handle = elements_.Find(which);
        if (handle == kNoHandle) {
            RaiseRunTime(which.is_position() ? kSubscriptOutOfRange : kInvalidCall);
        }
        return handle;
    }

    std::uint32_t HandleOf(const T* object) const {
        return identities_.Find(HashPointer(object), [&](std::uint32_t handle) {
            return SlotOf(handle).object.get() == object;
        });
    }

    static std::uint32_t HashPointer(const T* object) {
        const auto bits = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(object));
        return static_cast<std::uint32_t>((bits * 0x9E3779B97F4A7C15u) >> 32);
    }

    const Slot& SlotOf(std::uint32_t handle) const { return elements_.store().slots[handle]; }

    Elements elements_;
    KeyIndex identities_;  // from an object's address to its handle
};

template <class T>
class ObjectCollection<T>::Iterator {
  public:
    using iterator_category = std::input_iterator_tag;
    using value_type = std::shared_ptr<T>;
    using difference_type = std::ptrdiff_t;
    using pointer = const value_type*;
    using reference = const value_type&;

    Iterator() = default;
    reference operator*() const {
        return collection_->SlotOf(collection_->elements_.At(position_)).object;
    }
    pointer operator->() const { return &**this; }
    Iterator& operator++() {
        ++position_;
        return *this;
    }
    Iterator operator++(int) {
        Iterator before = *this;
        ++*this;
        return before;
    }
    bool operator==(const Iterator& other) const { return position_ == other.position_; }

  private:
    friend class ObjectCollection;
    Iterator(const ObjectCollection* collection, std::uint32_t position)
        : collection_(collection), position_(position) {}

    const ObjectCollection* collection_ = nullptr;
    std::uint32_t position_ = 0;
};

// A host's walk along the very collection that it was made on, which it keeps alive, whatever the
// collection's owner does with it meanwhile. The removal of an element never makes it skip or
// repeat another; what is put in behind the place it has reached is visited. A copy walks on from
// the same place on its own.
template <class T>
class Enumerator {
  public:
    class Iterator;

    // No collection is an empty one.
    explicit Enumerator(std::shared_ptr<const ObjectCollection<T>> collection)
        : collection_(collection ? std::move(collection)
                                 : std::make_shared<const ObjectCollection<T>>()),
          cursor_(collection_->elements_) {}
    // Moving copies: an enumerator always has its collection.
    Enumerator(const Enumerator&) = default;
    Enumerator& operator=(const Enumerator&) = default;

    // The next element, or nullptr at the end.
    std::shared_ptr<T> Next() {
        const std::uint32_t handle = cursor_.Next();
        return handle == kNoHandle ? nullptr : collection_->SlotOf(handle).object;
    }

    // Back to before the first element.
    void Reset() { cursor_.Reset(); }

    // begin() starts over. All iterators of one enumerator share its place.
    Iterator begin() {
        Reset();
        return Iterator(this);
    }
    std::default_sentinel_t end() const { return {}; }

  private:
    std::shared_ptr<const ObjectCollection<T>> collection_;
    typename ObjectCollection<T>::Cursor cursor_;
};

template <class T>
class Enumerator<T>::Iterator {
  public:
    using value_type = std::shared_ptr<T>;
    using difference_type = std::ptrdiff_t;

    const value_type& operator*() const { return element_; }
    Iterator& operator++() {
        element_ = enumerator_->Next();
        return *this;
    }
    void operator++(int) { ++*this; }
    bool operator==(std::default_sentinel_t) const { return element_ == nullptr; }

  private:
    friend class Enumerator;
    explicit Iterator(Enumerator* enumerator)
        : enumerator_(enumerator), element_(enumerator->Next()) {}

    Enumerator* enumerator_;
    value_type element_;
};

}  // namespace tavolin
