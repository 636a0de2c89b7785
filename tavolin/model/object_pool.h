// Memory for objects that come and go by the dozen: that of those that are gone is kept for those
// to come. For one thread at a time, the objects' last references included.
//
//     ObjectPool::Pointer pool = ObjectPool::Make();
//     std::allocate_shared<CVLRecord>(PoolAllocator<CVLRecord>(*pool), arena, record);
//
// The objects may outlive the pointer.
#pragma once

#include <array>
#include <cassert>
#include <cstddef>
#include <memory>
#include <new>

#include "tavolin/base/reuse.h"

namespace tavolin {

// For blocks of one size.
class ObjectPool {
  public:
    struct Closer {
        void operator()(ObjectPool* pool) const noexcept { pool->Close(); }
    };
    using Pointer = std::unique_ptr<ObjectPool, Closer>;
    static Pointer Make() { return Pointer(new ObjectPool); }

    ObjectPool(const ObjectPool&) = delete;
    ObjectPool& operator=(const ObjectPool&) = delete;

    void* Take(std::size_t bytes) {
        assert(bytes_ == 0 || bytes_ == bytes);
        bytes_ = bytes;
        void* const block = kept_ > 0 ? blocks_[--kept_] : ::operator new(bytes);
        ++given_;
        return block;
    }
    void GiveBack(void* block) noexcept {
        --given_;
        if (kReusesMemory && !closed_ && kept_ < blocks_.size()) {
            blocks_[kept_++] = block;
            return;
        }
        ::operator delete(block);
        if (closed_ && given_ == 0) delete this;
    }

  private:
    ObjectPool() = default;
    ~ObjectPool() = default;

    // Nothing is asked of it from here on; blocks may still be given back.
    void Close() noexcept {
        closed_ = true;
        while (kept_ > 0) ::operator delete(blocks_[--kept_]);
        if (given_ == 0) delete this;
    }

    std::array<void*, 64> blocks_;
    std::size_t bytes_ = 0;  // of a block
    std::size_t kept_ = 0;
    std::size_t given_ = 0;
    bool closed_ = false;
};

// An allocator for std::allocate_shared.
template <class T>
class PoolAllocator {
  public:
    using value_type = T;

    explicit PoolAllocator(ObjectPool& pool) : pool_(&pool) {}
    template <class Other>
    PoolAllocator(const PoolAllocator<Other>& other) : pool_(other.pool_) {}  // NOLINT

    T* allocate(std::size_t count) {
        static_assert(alignof(T) <= __STDCPP_DEFAULT_NEW_ALIGNMENT__);
        return static_cast<T*>(pool_->Take(count * sizeof(T)));
    }
    void deallocate(T* block, std::size_t) noexcept { pool_->GiveBack(block); }

    friend bool operator==(const PoolAllocator& a, const PoolAllocator& b) {
        return a.pool_ == b.pool_;
    }

  private:
    template <class Other>
    friend class PoolAllocator;

    ObjectPool* pool_;
};

}  // namespace tavolin
