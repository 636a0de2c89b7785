// The order of a collection: a sequence of 32-bit handles in chunks of up to 512.
//
//     OrderList order;
//     order.Append(handle, set_leaf);
//     order.InsertAt(1, other, set_leaf);
//     order.At(2);                                  // handle
//     order.PositionOf(handle, leaf_of(handle));    // 2
//
// An element's leaf tells its chunk, by an id which stays while chunks are put before it, and about
// where in the chunk it was put. The owner keeps the leaf of every element and is told each new one
// through `set_leaf(handle, leaf)`, which must not throw and must not touch the list. At,
// PositionOf, InsertAt and RemoveAt cost O(log n); appending and walking cost what a vector costs.
// While a list has only been appended to, At is one array access and no tables exist beside the
// chunks.
//
// Every change happens whole or, when memory runs out, not at all.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <utility>
#include <vector>

#include "tavolin/base/export.h"
#include "tavolin/base/prefetch.h"

namespace tavolin {

// What stands for "no element" wherever a handle is given back.
inline constexpr std::uint32_t kNoHandle = 0xFFFFFFFFu;

class OrderCursor;

class OrderList {
  public:
    static constexpr std::uint32_t kChunkSize = 512;

    OrderList() = default;
    OrderList(const OrderList&) = delete;
    OrderList& operator=(const OrderList&) = delete;
    // Living cursors lose their list and are at its end from then on.
    TAVOLIN_API ~OrderList();

    std::uint32_t size() const { return size_; }
    bool empty() const { return size_ == 0; }

    // The handle at a 1-based position, or kNoHandle outside 1..size().
    std::uint32_t At(std::uint32_t position) const {
        if (position - 1 >= size_) return kNoHandle;
        return At(Locate(position - 1));
    }

    // A place: which chunk, and where in it. Good until the list changes.
    struct Spot {
        std::uint32_t chunk;
        std::uint32_t offset;
    };
    // At in two steps: where the handle at a position, 1..size(), is, which is fetched from memory
    // for later, and then the handle.
    Spot SpotAt(std::uint32_t position) const {
        const Spot spot = Locate(position - 1);
        PrefetchLine(&chunks_[spot.chunk].handles[spot.offset]);
        return spot;
    }
    std::uint32_t At(Spot spot) const { return chunks_[spot.chunk].span()[spot.offset]; }

    // The 1-based position of an element with its leaf, or 0 when it is not in that leaf. Any
    // number may be given as the leaf.
    std::uint32_t PositionOf(std::uint32_t handle, std::uint32_t leaf) const;
    // Whether an element is in its leaf.
    bool Holds(std::uint32_t handle, std::uint32_t leaf) const {
        return SpotOf(handle, leaf).chunk != kNowhere;
    }

    template <class SetLeaf>
    void Append(std::uint32_t handle, SetLeaf&& set_leaf) {
        InsertAt(size_ + 1, handle, set_leaf);
    }

    // Puts `handle` at `position`, 1..size() + 1; what stood there and behind moves up by one.
    template <class SetLeaf>
    void InsertAt(std::uint32_t position, std::uint32_t handle, SetLeaf&& set_leaf) {
        Moved moved;
        const std::uint32_t leaf = Insert(position - 1, handle, moved);
        Tell(moved, set_leaf);
        set_leaf(handle, leaf);
    }

    // Takes the element at `position`, 1..size(), out and gives it back.
    template <class SetLeaf>
    std::uint32_t RemoveAt(std::uint32_t position, SetLeaf&& set_leaf) {
        const Spot spot = Locate(position - 1);
        const std::uint32_t handle = chunks_[spot.chunk].span()[spot.offset];
        Tell(Erase(spot), set_leaf);
        return handle;
    }

    // Takes an element with its leaf out; false, and nothing done, when it is not in that leaf.
    template <class SetLeaf>
    bool Remove(std::uint32_t handle, std::uint32_t leaf, SetLeaf&& set_leaf) {
        const Spot spot = SpotOf(handle, leaf);
        if (spot.chunk == kNowhere) return false;
        Tell(Erase(spot), set_leaf);
        return true;
    }

    // Replaces the whole sequence. `handles` must not lie inside the list. A cursor keeps its
    // position, or is at the end when fewer elements are left.
    template <class SetLeaf>
    void Assign(std::span<const std::uint32_t> handles, SetLeaf&& set_leaf) {
        Replace(handles);
        for (const Chunk& chunk : chunks_) Tell({chunk.span(), chunk.id, 0}, set_leaf);
    }
    // The leaf that the element at `index`, from 0, is in after Assign.
    static std::uint32_t LeafOfAssigned(std::uint32_t index) {
        return LeafOf(index / kChunkSize, index % kChunkSize);
    }

    // Gives all memory back. Cursors stand before whatever is put in next.
    void Clear();

    // Makes room for the directory of `count` elements; the chunks themselves come with them.
    void Reserve(std::size_t count) { chunks_.reserve(count / kChunkSize + 1); }

    // The bytes that the list has got beside itself. Costs a look at every chunk.
    std::size_t memory() const;

    // Calls body(handle) in order. The body must not change the list: a cursor serves for that.
    template <class Body>
    void ForEach(Body&& body) const {
        for (const Chunk& chunk : chunks_) {
            for (const std::uint32_t handle : chunk.span()) body(handle);
        }
    }
    // The same with several of them at a time: body(handles).
    template <class Body>
    void ForEachRun(Body&& body) const {
        for (const Chunk& chunk : chunks_) body(chunk.span());
    }

    // The first handle in order that test(handle) is true for, or kNoHandle.
    template <class Test>
    std::uint32_t First(Test&& test) const {
        for (const Chunk& chunk : chunks_) {
            for (const std::uint32_t handle : chunk.span()) {
                if (test(handle)) return handle;
            }
        }
        return kNoHandle;
    }

  private:
    friend class OrderCursor;

    static constexpr std::uint32_t kNowhere = 0xFFFFFFFFu;

    // An element that is taken out leaves a hole, kNoHandle, until somebody asks for the others in
    // order: to close it would touch the whole chunk, which need not be in a cache.
    struct Chunk {
        std::unique_ptr<std::uint32_t[]> handles;
        std::uint32_t count = 0;  // without the holes
        std::uint32_t capacity = 0;
        std::uint32_t id = 0;
        mutable std::uint16_t holes = 0;
        std::uint16_t first_hole = 0;  // where there are holes

        std::span<const std::uint32_t> span() const {
            if (holes != 0) CloseHoles();
            return {handles.get(), count};
        }
        std::span<const std::uint32_t> with_holes() const { return {handles.get(), count + holes}; }
        void MakeHole(std::uint32_t offset);
        void CloseHoles() const;
    };
    // Elements that a change has brought to another chunk, there from `offset` on.
    struct Moved {
        std::span<const std::uint32_t> handles = {};
        std::uint32_t id = 0;
        std::uint32_t offset = 0;
    };

    // A leaf is the chunk's id, and in the last bits which line of memory of it the element was put
    // into. As others come and go it moves on from there, so that a search begins there.
    static constexpr std::uint32_t kLine = 16;
    static constexpr std::uint32_t kLines = kChunkSize / kLine;
    static std::uint32_t LeafOf(std::uint32_t id, std::uint32_t offset) {
        return id * kLines + offset / kLine;
    }

    template <class SetLeaf>
    static void Tell(const Moved& moved, SetLeaf& set_leaf) {
        std::uint32_t offset = moved.offset;
        for (const std::uint32_t handle : moved.handles) {
            set_leaf(handle, LeafOf(moved.id, offset++));
        }
    }

    Spot Locate(std::uint32_t index) const {
        if (direct_) return {index / kChunkSize, index % kChunkSize};
        return Descend(index);
    }
    // The place where an element inserted at `index` goes.
    Spot Entrance(std::uint32_t index) const;
    Spot Descend(std::uint32_t index) const;
    std::uint32_t ChunkOf(std::uint32_t leaf) const {
        const std::uint32_t id = leaf / kLines;
        if (direct_) return id < chunks_.size() ? id : kNowhere;
        return id < index_of_id_.size() ? index_of_id_[id] : kNowhere;
    }
    // With the holes counted in the offset. While there are cursors the chunk has none.
    Spot SpotOf(std::uint32_t handle, std::uint32_t leaf) const;
    std::uint32_t IndexOf(Spot spot) const;

    std::uint32_t Insert(std::uint32_t index, std::uint32_t handle, Moved& moved);
    Moved Erase(Spot spot);
    Moved Shrink(std::uint32_t chunk);
    void Replace(std::span<const std::uint32_t> handles);
    Spot MakeRoom(Spot spot, Moved& moved);
    Moved Split(std::uint32_t chunk);
    void AppendChunk();
    void InsertChunk(std::uint32_t at, Chunk chunk);
    void DropChunk(std::uint32_t at);
    static Chunk NewChunk(std::uint32_t capacity);
    static void Widen(Chunk& chunk);

    void PrepareTables();
    void ForgetTables();
    void LeaveDirect();
    void RebuildTables();
    void Count(std::uint32_t chunk, std::uint32_t change);

    void CursorsInserted(std::uint32_t index);
    void CursorsRemoved(std::uint32_t index);
    void CursorsReplaced();

    std::vector<Chunk> chunks_;
    // Chunk i has the id i, and all chunks but the last are full. The tables below are empty then.
    bool direct_ = true;
    std::uint32_t size_ = 0;
    mutable OrderCursor* cursors_ = nullptr;

    std::vector<std::uint32_t> sums_;         // Fenwick tree over the chunks' counts, from 1
    std::vector<std::uint32_t> index_of_id_;  // kNowhere for an id that is free
    std::vector<std::uint32_t> free_ids_;
};

// A walk along a list that may change in any way meanwhile: the removal of an element never makes
// it skip or repeat another; what is put in behind the cursor's place is visited, what is put in
// before it is not. A cursor may outlive its list. A copy walks on from the same place on its own.
class TAVOLIN_API OrderCursor {
  public:
    explicit OrderCursor(const OrderList& list) { Attach(&list); }
    OrderCursor(const OrderCursor& other) : passed_(other.passed_) { Attach(other.list_); }
    OrderCursor& operator=(const OrderCursor& other);
    ~OrderCursor() { Detach(); }

    // The next handle, or kNoHandle at the end. Elements appended later are visited even after
    // that.
    std::uint32_t Next() {
        if (next_ == stop_ && !Refill()) return kNoHandle;
        ++passed_;
        return *next_++;
    }

    // Back to before the first element.
    void Reset();

  private:
    friend class OrderList;

    void Attach(const OrderList* list);
    void Detach();
    bool Refill();
    void Forget() { next_ = stop_ = nullptr; }

    const OrderList* list_ = nullptr;
    OrderCursor* newer_ = nullptr;
    OrderCursor* older_ = nullptr;
    std::uint32_t passed_ = 0;             // how many elements stand before the cursor
    const std::uint32_t* next_ = nullptr;  // the rest of the chunk it is in, until a change
    const std::uint32_t* stop_ = nullptr;
};

}  // namespace tavolin
