#include "tavolin/model/order_list.h"

#include <bit>
#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace tavolin {
namespace {

constexpr std::uint32_t kFirstCapacity = 4;
// A chunk with fewer elements joins a neighbour if the two fill no more than this together.
constexpr std::uint32_t kSparse = OrderList::kChunkSize / 4;
constexpr std::uint32_t kJoined = OrderList::kChunkSize * 3 / 4;

template <class T>
void MakeRoomFor(std::vector<T>& list, std::size_t count) {
    if (list.capacity() < count) list.reserve(std::max(count, 2 * list.capacity()));
}

void Shift(std::uint32_t* to, const std::uint32_t* from, std::uint32_t count) {
    if (count > 0) std::memmove(to, from, count * sizeof(std::uint32_t));
}

constexpr std::uint32_t kBlock = 16;

// Whether `wanted` is among the block of handles from `at` on. A search for the position of an
// element spends its time here, and compilers do not turn the plain loop into vector code by
// themselves.
bool InBlock(const std::uint32_t* at, std::uint32_t wanted) {
#ifdef __SSE2__
    const __m128i all = _mm_set1_epi32(static_cast<int>(wanted));
    const auto equal = [&](int i) {
        return _mm_cmpeq_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(at) + i), all);
    };
    const __m128i hits =
        _mm_or_si128(_mm_or_si128(equal(0), equal(1)), _mm_or_si128(equal(2), equal(3)));
    return _mm_movemask_epi8(hits) != 0;
#else
    return std::find(at, at + kBlock, wanted) != at + kBlock;
#endif
}

// The offset of `wanted`, or the number of handles when it is not among them. The search goes both
// ways from a block on.
std::uint32_t Search(std::span<const std::uint32_t> handles, std::uint32_t wanted,
                     std::uint32_t block) {
    const auto count = static_cast<std::uint32_t>(handles.size());
    const auto find_in = [&](std::uint32_t begin, std::uint32_t end) {
        const std::uint32_t* const at =
            std::find(handles.data() + begin, handles.data() + end, wanted);
        return at == handles.data() + end ? count : static_cast<std::uint32_t>(at - handles.data());
    };
    const std::uint32_t whole = count - count % kBlock;
    std::uint32_t low = std::min(block * kBlock, whole);
    std::uint32_t high = low;
    if (low == whole) {  // in what is left behind the last block
        const std::uint32_t offset = find_in(whole, count);
        if (offset != count) return offset;
    }
    while (low > 0 || high < whole) {
        if (high < whole) {
            if (InBlock(handles.data() + high, wanted)) return find_in(high, high + kBlock);
            high += kBlock;
        }
        if (low > 0) {
            low -= kBlock;
            if (InBlock(handles.data() + low, wanted)) return find_in(low, low + kBlock);
        }
    }
    return find_in(whole, count);
}

// The first hole from `at` on, or `end`.
const std::uint32_t* NextHole(const std::uint32_t* at, const std::uint32_t* end) {
    while (at + kBlock <= end && !InBlock(at, kNoHandle)) at += kBlock;
    return std::find(at, end, kNoHandle);
}

}  // namespace

OrderList::~OrderList() {
    for (OrderCursor* cursor = cursors_; cursor != nullptr; cursor = cursor->older_) {
        cursor->list_ = nullptr;
        cursor->Forget();
    }
}

// ---- Places

OrderList::Spot OrderList::Descend(std::uint32_t index) const {
    const auto chunks = static_cast<std::uint32_t>(chunks_.size());
    std::uint32_t at = 0;
    for (std::uint32_t step = std::bit_floor(chunks); step != 0; step /= 2) {
        if (at + step <= chunks && sums_[at + step] <= index) {
            at += step;
            index -= sums_[at];
        }
    }
    return {at, index};
}

OrderList::Spot OrderList::Entrance(std::uint32_t index) const {
    if (index == size_) {
        if (chunks_.empty()) return {0, 0};
        return {static_cast<std::uint32_t>(chunks_.size() - 1), chunks_.back().count};
    }
    const Spot spot = Locate(index);
    const bool full = chunks_[spot.chunk].count == kChunkSize;
    if (full && spot.offset == 0 && spot.chunk > 0 && chunks_[spot.chunk - 1].count < kChunkSize) {
        return {spot.chunk - 1, chunks_[spot.chunk - 1].count};
    }
    return spot;
}

OrderList::Spot OrderList::SpotOf(std::uint32_t handle, std::uint32_t leaf) const {
    const std::uint32_t at = ChunkOf(leaf);
    if (at == kNowhere || handle == kNoHandle) return {kNowhere, 0};
    const Chunk& chunk = chunks_[at];
    const auto handles = cursors_ != nullptr ? chunk.span() : chunk.with_holes();
    const std::uint32_t offset = Search(handles, handle, leaf % kLines);
    if (offset == handles.size()) return {kNowhere, 0};
    return {at, offset};
}

std::uint32_t OrderList::IndexOf(Spot spot) const {
    if (direct_) return spot.chunk * kChunkSize + spot.offset;
    std::uint32_t index = spot.offset;
    for (std::uint32_t at = spot.chunk; at != 0; at &= at - 1) index += sums_[at];
    return index;
}

std::uint32_t OrderList::PositionOf(std::uint32_t handle, std::uint32_t leaf) const {
    const std::uint32_t chunk = ChunkOf(leaf);
    if (chunk != kNowhere && chunks_[chunk].holes != 0) chunks_[chunk].CloseHoles();
    const Spot spot = SpotOf(handle, leaf);
    return spot.chunk == kNowhere ? 0 : IndexOf(spot) + 1;
}

// ---- Changes. Memory is got before the first change, so that a failure leaves the list as it was.

std::uint32_t OrderList::Insert(std::uint32_t index, std::uint32_t handle, Moved& moved) {
    Spot spot = Entrance(index);
    if (chunks_.empty() || chunks_[spot.chunk].count == kChunkSize) {
        spot = MakeRoom(spot, moved);
    } else if (chunks_[spot.chunk].count == chunks_[spot.chunk].capacity) {
        Widen(chunks_[spot.chunk]);
    }
    Chunk& chunk = chunks_[spot.chunk];
    if (chunk.holes != 0) chunk.CloseHoles();
    std::uint32_t* place = chunk.handles.get() + spot.offset;
    Shift(place + 1, place, chunk.count - spot.offset);
    *place = handle;
    ++chunk.count;
    ++size_;
    Count(spot.chunk, 1);
    if (!moved.handles.empty() && moved.id == chunk.id) moved.handles = chunk.span();
    if (cursors_ != nullptr) CursorsInserted(index);
    return LeafOf(chunk.id, spot.offset);
}

// At either end a new chunk is begun, because whoever inserts there goes on doing so and would
// leave halves of chunks behind.
OrderList::Spot OrderList::MakeRoom(Spot spot, Moved& moved) {
    if (IndexOf(spot) == size_) {
        AppendChunk();
        return {static_cast<std::uint32_t>(chunks_.size() - 1), 0};
    }
    PrepareTables();
    if (spot.chunk == 0 && spot.offset == 0) {
        InsertChunk(0, NewChunk(kChunkSize));
        return spot;
    }
    moved = Split(spot.chunk);
    const std::uint32_t left = chunks_[spot.chunk].count;
    return spot.offset <= left ? spot : Spot{spot.chunk + 1, spot.offset - left};
}

OrderList::Moved OrderList::Split(std::uint32_t chunk) {
    Chunk right = NewChunk(kChunkSize);
    Chunk& left = chunks_[chunk];
    right.count = left.count / 2;
    left.count -= right.count;
    Shift(right.handles.get(), left.handles.get() + left.count, right.count);
    InsertChunk(chunk + 1, std::move(right));
    return {chunks_[chunk + 1].span(), chunks_[chunk + 1].id, 0};
}

void OrderList::AppendChunk() {
    Chunk chunk = NewChunk(chunks_.empty() ? kFirstCapacity : kChunkSize);
    if (direct_) {
        chunk.id = static_cast<std::uint32_t>(chunks_.size());
        chunks_.push_back(std::move(chunk));
        return;
    }
    PrepareTables();
    InsertChunk(static_cast<std::uint32_t>(chunks_.size()), std::move(chunk));
}

void OrderList::InsertChunk(std::uint32_t at, Chunk chunk) {
    LeaveDirect();
    if (free_ids_.empty()) {
        chunk.id = static_cast<std::uint32_t>(index_of_id_.size());
        index_of_id_.push_back(at);
    } else {
        chunk.id = free_ids_.back();
        free_ids_.pop_back();
    }
    chunks_.insert(chunks_.begin() + at, std::move(chunk));
    RebuildTables();
}

OrderList::Moved OrderList::Erase(Spot spot) {
    if (direct_ && spot.chunk + 1 != chunks_.size()) {
        PrepareTables();
        LeaveDirect();
    }
    if (cursors_ != nullptr) CursorsRemoved(IndexOf(spot));
    Chunk& chunk = chunks_[spot.chunk];
    chunk.MakeHole(spot.offset);
    --size_;
    Count(spot.chunk, ~0u);
    if (chunk.count >= kSparse) return {};
    return Shrink(spot.chunk);
}

OrderList::Moved OrderList::Shrink(std::uint32_t at) {
    if (chunks_[at].count == 0) {
        DropChunk(at);
        return {};
    }
    if (direct_) return {};
    const std::uint32_t count = chunks_[at].count;
    const auto has_room = [&](std::uint32_t other) {
        return chunks_[other].count + count <= kJoined;
    };
    Moved moved;
    if (at > 0 && has_room(at - 1)) {
        Chunk& left = chunks_[at - 1];
        std::uint32_t* const end = left.handles.get() + left.span().size();
        Shift(end, chunks_[at].span().data(), count);
        moved = {{end, count}, left.id, left.count};
        left.count += count;
    } else if (at + 1 < chunks_.size() && has_room(at + 1)) {
        Chunk& right = chunks_[at + 1];
        Shift(right.handles.get() + count, right.span().data(), right.count);
        Shift(right.handles.get(), chunks_[at].span().data(), count);
        moved = {{right.handles.get(), count}, right.id, 0};
        right.count += count;
    } else {
        return {};
    }
    DropChunk(at);
    return moved;
}

void OrderList::DropChunk(std::uint32_t at) {
    if (size_ == 0) {
        // The last chunk stays, so that what was taken out can be put back without memory.
        std::swap(chunks_.front(), chunks_[at]);
        chunks_.resize(1);
        chunks_.front().id = 0;
        ForgetTables();
        return;
    }
    if (!direct_) {
        index_of_id_[chunks_[at].id] = kNowhere;
        free_ids_.push_back(chunks_[at].id);
    }
    chunks_.erase(chunks_.begin() + at);
    if (!direct_) RebuildTables();
}

void OrderList::Clear() {
    std::vector<Chunk>().swap(chunks_);
    std::vector<std::uint32_t>().swap(sums_);
    std::vector<std::uint32_t>().swap(index_of_id_);
    std::vector<std::uint32_t>().swap(free_ids_);
    size_ = 0;
    direct_ = true;
    CursorsReplaced();
}

void OrderList::Replace(std::span<const std::uint32_t> handles) {
    std::vector<Chunk> fresh;
    fresh.reserve((handles.size() + kChunkSize - 1) / kChunkSize);
    for (std::size_t at = 0; at < handles.size(); at += kChunkSize) {
        const auto count =
            static_cast<std::uint32_t>(std::min<std::size_t>(kChunkSize, handles.size() - at));
        fresh.push_back(NewChunk(handles.size() < kChunkSize ? count : kChunkSize));
        fresh.back().id = static_cast<std::uint32_t>(fresh.size() - 1);
        fresh.back().count = count;
        Shift(fresh.back().handles.get(), handles.data() + at, count);
    }
    chunks_.swap(fresh);
    ForgetTables();
    size_ = static_cast<std::uint32_t>(handles.size());
    CursorsReplaced();
}

void OrderList::Chunk::MakeHole(std::uint32_t offset) {
    const auto place = static_cast<std::uint16_t>(offset);
    first_hole = holes == 0 ? place : std::min(first_hole, place);
    handles[offset] = kNoHandle;
    --count;
    ++holes;
}

void OrderList::Chunk::CloseHoles() const {
    const std::uint32_t* const end = handles.get() + count + holes;
    std::uint32_t* to = handles.get() + first_hole;
    const std::uint32_t* from = to + 1;
    const auto move_up_to = [&](const std::uint32_t* place) {
        const auto whole = static_cast<std::uint32_t>(place - from);
        Shift(to, from, whole);
        to += whole;
    };
    for (; holes > 1; --holes) {
        const std::uint32_t* const next = NextHole(from, end);
        move_up_to(next);
        from = next + 1;
    }
    move_up_to(end);
    holes = 0;
}

std::size_t OrderList::memory() const {
    std::size_t numbers = sums_.capacity() + index_of_id_.capacity() + free_ids_.capacity();
    for (const Chunk& chunk : chunks_) numbers += chunk.capacity;
    return numbers * sizeof(std::uint32_t) + chunks_.capacity() * sizeof(Chunk);
}

OrderList::Chunk OrderList::NewChunk(std::uint32_t capacity) {
    Chunk chunk;
    chunk.handles.reset(new std::uint32_t[capacity]);
    chunk.capacity = capacity;
    return chunk;
}

// Only the one chunk of a small list is ever less wide than a whole one.
void OrderList::Widen(Chunk& chunk) {
    Chunk wide = NewChunk(std::min(kChunkSize, chunk.capacity * 2));
    Shift(wide.handles.get(), chunk.handles.get(), chunk.count);
    chunk.handles = std::move(wide.handles);
    chunk.capacity = wide.capacity;
}

// ---- Tables

// After this, one more chunk and the tables of all of them need no memory.
void OrderList::PrepareTables() {
    const std::size_t chunks = chunks_.size() + 1;
    const std::size_t ids = std::max(chunks, index_of_id_.size() + 1);
    MakeRoomFor(chunks_, chunks);
    MakeRoomFor(sums_, chunks + 1);
    MakeRoomFor(index_of_id_, ids);
    MakeRoomFor(free_ids_, ids);
}

void OrderList::ForgetTables() {
    sums_.clear();
    index_of_id_.clear();
    free_ids_.clear();
    direct_ = true;
}

void OrderList::LeaveDirect() {
    if (!direct_) return;
    direct_ = false;
    index_of_id_.resize(chunks_.size());
    RebuildTables();
}

void OrderList::RebuildTables() {
    const std::size_t chunks = chunks_.size();
    sums_.assign(chunks + 1, 0);
    for (std::size_t i = 1; i <= chunks; ++i) {
        const Chunk& chunk = chunks_[i - 1];
        index_of_id_[chunk.id] = static_cast<std::uint32_t>(i - 1);
        sums_[i] += chunk.count;
        const std::size_t parent = i + (i & (~i + 1));
        if (parent <= chunks) sums_[parent] += sums_[i];
    }
}

void OrderList::Count(std::uint32_t chunk, std::uint32_t change) {
    if (direct_) return;
    for (std::size_t i = chunk + std::size_t{1}; i < sums_.size(); i += i & (~i + 1)) {
        sums_[i] += change;
    }
}

// ---- Cursors

void OrderList::CursorsInserted(std::uint32_t index) {
    for (OrderCursor* cursor = cursors_; cursor != nullptr; cursor = cursor->older_) {
        if (index < cursor->passed_) ++cursor->passed_;
        cursor->Forget();
    }
}

void OrderList::CursorsRemoved(std::uint32_t index) {
    for (OrderCursor* cursor = cursors_; cursor != nullptr; cursor = cursor->older_) {
        if (index < cursor->passed_) --cursor->passed_;
        cursor->Forget();
    }
}

void OrderList::CursorsReplaced() {
    for (OrderCursor* cursor = cursors_; cursor != nullptr; cursor = cursor->older_) {
        cursor->passed_ = std::min(cursor->passed_, size_);
        cursor->Forget();
    }
}

OrderCursor& OrderCursor::operator=(const OrderCursor& other) {
    if (this == &other) return *this;
    Detach();
    passed_ = other.passed_;
    Attach(other.list_);
    return *this;
}

void OrderCursor::Reset() {
    passed_ = 0;
    Forget();
}

void OrderCursor::Attach(const OrderList* list) {
    list_ = list;
    newer_ = nullptr;
    older_ = nullptr;
    Forget();
    if (list == nullptr) return;
    older_ = list->cursors_;
    if (older_ != nullptr) older_->newer_ = this;
    list->cursors_ = this;
}

void OrderCursor::Detach() {
    if (list_ == nullptr) return;
    (newer_ != nullptr ? newer_->older_ : list_->cursors_) = older_;
    if (older_ != nullptr) older_->newer_ = newer_;
}

bool OrderCursor::Refill() {
    if (list_ == nullptr || passed_ >= list_->size()) return false;
    const OrderList::Spot spot = list_->Locate(passed_);
    const std::span<const std::uint32_t> rest =
        list_->chunks_[spot.chunk].span().subspan(spot.offset);
    next_ = rest.data();
    stop_ = next_ + rest.size();
    return true;
}

}  // namespace tavolin
