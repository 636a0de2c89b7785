#include "tavolin/model/record_arena.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <new>

#include "tavolin/base/text.h"
#include "tavolin/base/text_search.h"
#include "tavolin/errors/error.h"
#include "tavolin/model/attachment_set.h"
#include "tavolin/model/order_list.h"
#include "tavolin/model/record.h"
#include "tavolin/model/session.h"
#include "tavolin/persist/little_endian.h"
#include "tavolin/persist/property_bag.h"

namespace tavolin {
namespace {

constexpr std::size_t kUnit = RecordArena::kUnit;
constexpr std::size_t kHeaderSize = 20;
constexpr std::size_t kMaxInlineUnits = 0xFFFF;
constexpr std::size_t kSlabUnits = std::size_t{1} << 17;
constexpr std::size_t kFirstSlabUnits = 64;
// A large arena's slabs fill a large page each, without which most reads of a record would have to
// wait for the place of its page first.
constexpr std::size_t kLargeArenaUnits = 8 * kSlabUnits;
constexpr std::size_t kLargeSlabUnits =
    2 * kSlabUnits - (TextSearcher::kPadding + ByteBuffer::kPadding) / kUnit;
constexpr std::size_t kTypicalImage = 64;  // bytes
constexpr std::array<bool, kFieldCount> kEveryField = {true, true, true, true, true,
                                                       true, true, true, true, true};

std::size_t UnitsFor(std::size_t bytes) { return (bytes + kUnit - 1) / kUnit; }

// Blocks come in sizes of every unit up to 64 and then in eight steps for each doubling, so that a
// block that was freed fits another record again.
std::size_t SizeClass(std::size_t units) {
    if (units <= 64) return units;
    const auto log = static_cast<std::size_t>(std::bit_width(units - 1));  // at least 7
    const std::size_t step = std::size_t{1} << (log - 4);
    return 64 + (log - 7) * 8 + (units - (std::size_t{1} << (log - 1)) + step - 1) / step;
}

std::size_t RoundToClass(std::size_t units) {
    if (units <= 64) return units;
    const auto log = static_cast<std::size_t>(std::bit_width(units - 1));
    const std::size_t step = std::size_t{1} << (log - 4);
    return (units + step - 1) / step * step;
}

int WidthFor(std::size_t text_size) {
    if (text_size <= 0xFF) return 0;
    return text_size <= 0xFFFF ? 1 : 2;
}

std::uint16_t PackParts(const PrimaryKeyType& key) {
    unsigned packed = 0;
    unsigned shift = 0;
    for (const std::uint8_t part : key.Parts()) {
        packed |= (part == kNoField ? 15u : part) << shift;
        shift += 4;
    }
    return static_cast<std::uint16_t>(packed);
}

// Calls body(field) for the fields of a packed key, in the order of the key.
template <class Body>
void ForEachPart(std::uint16_t parts, Body&& body) {
    for (int shift = 0; shift < 16; shift += 4) {
        const int field = (parts >> shift) & 15;
        if (field != 15) body(field);
    }
}

bool HoldsPart(std::uint16_t parts, int field) {
    bool holds = false;
    ForEachPart(parts, [&](int part) { holds = holds || part == field; });
    return holds;
}

// The texts of a packed key's fields one behind the other, of which text(field) gives each. They
// must outlive it: a single one is not copied.
class JoinedParts {
  public:
    template <class TextOf>
    JoinedParts(std::uint16_t parts, TextOf&& text_of) {
        int count = 0;
        ForEachPart(parts, [&](int field) {
            const std::string_view part = text_of(field);
            if (count++ == 0) {
                text_ = part;
            } else {
                Append(part);
            }
        });
    }
    JoinedParts(const JoinedParts&) = delete;
    JoinedParts& operator=(const JoinedParts&) = delete;

    std::string_view text() const { return text_; }

  private:
    void Append(std::string_view part) {
        const std::size_t size = text_.size() + part.size();
        if (size <= small_.size()) {
            if (text_.data() != small_.data()) text_.copy(small_.data(), text_.size());
            part.copy(small_.data() + text_.size(), part.size());
            text_ = {small_.data(), size};
        } else {
            if (large_.empty()) large_ = text_;
            text_ = large_ += part;
        }
    }

    std::string_view text_;
    std::array<char, 256> small_;
    std::string large_;
};

}  // namespace

RecordArena::RecordArena(std::shared_ptr<Session> session) : session_(std::move(session)) {
    free_.fill(kNoHandle);
}

RecordArena::~RecordArena() {
    if (!adopted_) return;
    for (const auto& [record, extras] : extras_) At(record)->flags &= kWidthMask | kNotAscii;
}

void RecordArena::JoinSession(std::shared_ptr<Session> session) {
    session_ = std::move(session);
    for (auto& [record, extras] : extras_) {
        if (extras.attachments) extras.attachments->JoinSession(session_);
    }
}

// Without branches for the one width that nearly all records have.
bool RecordArena::Payload::EndsRise() const {
    std::uint32_t last = 0;
    bool rise = true;
    if (width == 0) {
        for (int i = 0; i < kFieldCount; ++i) {
            rise &= ends[i] >= last;
            last = ends[i];
        }
        return rise;
    }
    for (int i = 0; i < kFieldCount; ++i) {
        rise &= End(i) >= last;
        last = End(i);
    }
    return rise;
}

// --- blocks

void RecordArena::AddSlab(std::size_t units) {
    std::size_t size = kFirstSlabUnits;
    if (!memory_blocks_.empty()) size = std::min(kSlabUnits, memory_ / kUnit * 3);
    if (memory_ / kUnit >= kLargeArenaUnits) size = kLargeSlabUnits;
    if (size < units) size = units;
    const std::size_t spans = (size + kSlabUnits - 1) / kSlabUnits;
    const std::uint64_t first = std::uint64_t{slabs_.size()} << kSlabShift;
    if (first + size >= kNoHandle) throw std::bad_alloc();
    slabs_.reserve(slabs_.size() + spans);
    memory_blocks_.reserve(memory_blocks_.size() + 1);
    ByteBuffer memory(size * kUnit + TextSearcher::kPadding);
    for (std::size_t i = 0; i < spans; ++i)
        slabs_.push_back(memory.data() + i * kSlabUnits * kUnit);
    memory_blocks_.push_back(std::move(memory));
    memory_ += size * kUnit;
    next_ = first;
    end_ = first + size;
}

RecordHandle RecordArena::Allocate(std::size_t units) {
    std::uint32_t& head = free_[SizeClass(units)];
    if (head != kNoHandle) {
        const RecordHandle block = head;
        head = LoadLittle<std::uint32_t>(Block(block));
        return block;
    }
    const std::size_t rounded = RoundToClass(units);
    if (next_ + rounded > end_) AddSlab(rounded);
    const auto block = static_cast<RecordHandle>(next_);
    next_ += rounded;
    return block;
}

void RecordArena::Free(RecordHandle block, std::size_t units) noexcept {
    std::uint32_t& head = free_[SizeClass(units)];
    StoreLittle(Block(block), head);
    head = block;
}

// --- records

void RecordArena::Fill(std::uint8_t* payload, int width, const FieldTexts& fields) {
    std::uint8_t* text = payload + (kFieldCount << width);
    std::uint32_t end = 0;
    for (int i = 0; i < kFieldCount; ++i) {
        const std::string_view value = fields[i];
        if (!value.empty()) std::memcpy(text + end, value.data(), value.size());
        end += static_cast<std::uint32_t>(value.size());
        switch (width) {
            case 0:
                payload[i] = static_cast<std::uint8_t>(end);
                break;
            case 1:
                StoreLittle(payload + 2 * i, static_cast<std::uint16_t>(end));
                break;
            default:
                StoreLittle(payload + 4 * i, end);
        }
    }
}

namespace {

struct Shape {
    std::size_t text_size = 0;
    bool ascii = true;
    int width = 0;
    std::size_t payload_size() const {
        return (static_cast<std::size_t>(kFieldCount) << width) + text_size;
    }
};

Shape ShapeOf(const FieldTexts& fields) {
    Shape shape;
    for (int i = 0; i < kFieldCount; ++i) {
        shape.text_size += fields[i].size();
        shape.ascii = shape.ascii && IsAscii(fields[i]);
    }
    if (shape.text_size > 0x7FFFFFFF) throw std::bad_alloc();
    shape.width = WidthFor(shape.text_size);
    return shape;
}

}  // namespace

RecordHandle RecordArena::Create(std::int32_t n_key, const FieldTexts& fields,
                                 const PrimaryKeyType& primary_key) {
    const Shape shape = ShapeOf(fields);
    const std::uint16_t parts = PackParts(primary_key);
    const JoinedParts key(parts, [&](int field) { return fields[field]; });

    const std::size_t inline_units = UnitsFor(kHeaderSize + shape.payload_size());
    const bool moved = inline_units > kMaxInlineUnits;
    const std::size_t units = moved ? UnitsFor(kHeaderSize + sizeof(std::uint32_t)) : inline_units;
    const RecordHandle record = Allocate(units);
    Header* header = At(record);
    *header = {0,    HashFold(key.text()), n_key, 0, static_cast<std::uint16_t>(units), parts, 0,
               false};
    header->flags = static_cast<std::uint8_t>(shape.width | (shape.ascii ? 0 : kNotAscii));
    if (!moved) {
        Fill(Block(record) + kHeaderSize, shape.width, fields);
        return record;
    }
    try {
        const RecordHandle own = AllocateMoved(shape.payload_size());
        Fill(Block(own) + sizeof(std::uint32_t), shape.width, fields);
        PlaceMoved(record, own);
    } catch (...) {
        Free(record, units);
        throw;
    }
    return record;
}

void RecordArena::AddReference(RecordHandle record) noexcept {
    // A count that has reached the top stays there: such a record is never destroyed.
    if (At(record)->references != 0xFFFF) ++At(record)->references;
}

void RecordArena::Release(RecordHandle record) noexcept {
    Header* header = At(record);
    if (header->references == 0xFFFF || --header->references > 0) return;
    if (!objects_.MarkLast(record)) Destroy(record);
}

// Calls body(record) for each, the first bytes of those to come being fetched meanwhile.
template <class Body>
void RecordArena::ForEachAhead(std::span<const RecordHandle> records, Body&& body) const {
    constexpr std::size_t kAhead = 16;
    for (std::size_t i = 0; i < records.size(); ++i) {
        if (i + kAhead < records.size()) PrefetchLine(At(records[i + kAhead]));
        body(records[i]);
    }
}

void RecordArena::AddReferences(std::span<const RecordHandle> records) noexcept {
    ForEachAhead(records, [this](RecordHandle record) { AddReference(record); });
}

void RecordArena::Release(std::span<const RecordHandle> records) noexcept {
    ForEachAhead(records, [this](RecordHandle record) { Release(record); });
}

void RecordArena::Destroy(RecordHandle record) noexcept {
    FreeMovedPayload(record);
    if (HasOwnKey(record)) own_keys_.erase({FindExtras(record)->key_hash, record});
    Extras dying;  // destroyed when the arena is whole again
    if (At(record)->flags & kExtras) {
        const auto found = extras_.find(record);
        dying = std::move(found->second);
        extras_.erase(found);
    }
    Free(record, At(record)->units);
}

void RecordArena::FreeMovedPayload(RecordHandle record) noexcept {
    if ((At(record)->flags & kMoved) == 0) return;
    const auto own = LoadLittle<std::uint32_t>(Block(record) + kHeaderSize);
    Free(own, LoadLittle<std::uint32_t>(Block(own)));
    At(record)->flags &= static_cast<std::uint8_t>(~kMoved);
}

RecordArena::FieldPlace RecordArena::PlaceOf(RecordHandle record, int field) const {
    const Payload payload = PayloadOf(record);
    return {{payload.text(), payload.End(kFieldCount - 1)},
            field == 0 ? 0 : payload.End(field - 1),
            payload.End(field)};
}

std::array<bool, kFieldCount> RecordArena::Differing(RecordHandle record,
                                                     const FieldTexts& values) const {
    const Payload payload = PayloadOf(record);
    std::array<bool, kFieldCount> differing;
    std::uint32_t begin = 0;
    for (int i = 0; i < kFieldCount; ++i) {
        const std::uint32_t end = payload.End(i);
        const std::string_view field(payload.text() + begin, end - begin);
        // Mostly they are the very same.
        differing[static_cast<std::size_t>(i)] = field != values[i] && !EqualFold(field, values[i]);
        begin = end;
    }
    return differing;
}

// Takes fields that change out of the counts until they have changed, or have not.
class RecordArena::Recount {
  public:
    Recount(RecordArena& arena, RecordHandle record, const FieldMarks& fields)
        : arena_(arena), record_(record), fields_(fields) {
        if (!arena_.Counted(record_)) return;
        arena_.ChangeCounts(record_, fields_, &ValueCounts::Remove);
    }
    ~Recount() {
        if (!arena_.Counted(record_)) return;
        arena_.ChangeCounts(record_, fields_, &ValueCounts::Add);
    }
    Recount(const Recount&) = delete;
    Recount& operator=(const Recount&) = delete;

  private:
    RecordArena& arena_;
    RecordHandle record_;
    const FieldMarks& fields_;
};

void RecordArena::SetFields(RecordHandle record, const FieldTexts& values,
                            const std::array<bool, kFieldCount>& changed) {
    const Payload payload = PayloadOf(record);
    std::array<std::string_view, kFieldCount> merged;
    bool touches_key = false;
    for (int i = 0; i < kFieldCount; ++i) {
        const auto at = static_cast<std::size_t>(i);
        merged[at] = changed[at] ? values[i] : payload.Field(i);
        touches_key = touches_key || (changed[at] && HoldsPart(At(record)->parts, i));
    }
    const FieldTexts fields(merged);
    const Shape shape = ShapeOf(fields);
    // Built beside, because the new values may lie in the record itself.
    std::array<std::uint8_t, 512> small;
    std::unique_ptr<std::uint8_t[]> large;
    std::uint8_t* bytes = small.data();
    if (shape.payload_size() > small.size()) {
        large.reset(new std::uint8_t[shape.payload_size()]);
        bytes = large.get();
    }
    Fill(bytes, shape.width, fields);
    if (touches_key) TakeOwnKey(record);
    const Recount recount(*this, record, changed);
    PlacePayload(record, {bytes, shape.payload_size()});
    std::uint8_t& flags = At(record)->flags;
    flags = static_cast<std::uint8_t>((flags & ~(kWidthMask | kNotAscii)) | shape.width |
                                      (shape.ascii ? 0 : kNotAscii));
}

// Puts the payload into the record's block, or else into one of its own.
void RecordArena::PlacePayload(RecordHandle record, std::span<const std::uint8_t> payload) {
    if (UnitsFor(kHeaderSize + payload.size()) <= At(record)->units) {
        FreeMovedPayload(record);
        std::memcpy(Block(record) + kHeaderSize, payload.data(), payload.size());
        return;
    }
    const RecordHandle own = AllocateMoved(payload.size());
    std::memcpy(Block(own) + sizeof(std::uint32_t), payload.data(), payload.size());
    PlaceMoved(record, own);
}

// A block for such a payload alone, which begins with the block's size.
RecordHandle RecordArena::AllocateMoved(std::size_t payload_size) {
    const std::size_t units = UnitsFor(sizeof(std::uint32_t) + payload_size);
    const RecordHandle own = Allocate(units);
    StoreLittle(Block(own), static_cast<std::uint32_t>(units));
    return own;
}

void RecordArena::PlaceMoved(RecordHandle record, RecordHandle own) noexcept {
    FreeMovedPayload(record);
    StoreLittle(Block(record) + kHeaderSize, own);
    At(record)->flags |= kMoved;
}

RecordArena::KeptFields RecordArena::KeepFields(RecordHandle record) {
    const Payload payload = PayloadOf(record);
    const RecordHandle block = AllocateMoved(payload.size());
    std::memcpy(Block(block) + sizeof(std::uint32_t), payload.ends, payload.size());
    return {block, static_cast<std::uint8_t>(At(record)->flags & (kWidthMask | kNotAscii))};
}

void RecordArena::PutBackFields(RecordHandle record, KeptFields& kept) noexcept {
    const Payload payload{Block(kept.block) + sizeof(std::uint32_t), kept.flags & kWidthMask};
    const Recount recount(*this, record, kEveryField);
    std::uint8_t& flags = At(record)->flags;
    flags = static_cast<std::uint8_t>((flags & ~(kWidthMask | kNotAscii)) | kept.flags);
    if (UnitsFor(kHeaderSize + payload.size()) <= At(record)->units) {
        PlacePayload(record, {payload.ends, payload.size()});
    } else {
        PlaceMoved(record, std::exchange(kept.block, kNoHandle));
    }
}

void RecordArena::DropFields(KeptFields& kept) noexcept {
    if (kept.block == kNoHandle) return;
    Free(kept.block, LoadLittle<std::uint32_t>(Block(kept.block)));
    kept.block = kNoHandle;
}

// --- keys

std::string RecordArena::ComposeKey(RecordHandle record) const {
    const Payload payload = PayloadOf(record);
    std::string key;
    ForEachPart(At(record)->parts, [&](int field) { key.append(payload.Field(field)); });
    return key;
}

std::string RecordArena::Key(RecordHandle record) const {
    return HasOwnKey(record) ? FindExtras(record)->key : ComposeKey(record);
}

std::string RecordArena::FilingKey(RecordHandle record) const {
    return HasOwnKey(record) ? FindExtras(record)->filing_key : ComposeKey(record);
}

bool RecordArena::FilingKeyEquals(RecordHandle record, std::string_view key) const {
    if (HasOwnKey(record)) return EqualFold(FindExtras(record)->filing_key, key);
    // Part by part, as long as the lengths agree, which for plain texts is all there is to it.
    const Payload payload = PayloadOf(record);
    std::string_view rest = key;
    bool equal = true;
    ForEachPart(At(record)->parts, [&](int field) {
        if (!equal) return;
        const std::string_view part = payload.Field(field);
        equal = part.size() <= rest.size() && EqualFold(rest.substr(0, part.size()), part);
        if (equal) rest.remove_prefix(part.size());
    });
    equal = equal && rest.empty();
    if (equal || (IsAscii(record) && tavolin::IsAscii(key))) return equal;
    return EqualFold(ComposeKey(record), key);
}

void RecordArena::SetKey(RecordHandle record, std::string_view key) {
    std::string copy(key);
    const std::uint32_t hash = HashFold(key);
    TakeOwnKey(record);
    Extras& extras = ExtrasOf(record);
    auto place = own_keys_.extract({extras.key_hash, record});
    place.value().first = hash;
    own_keys_.insert(std::move(place));
    extras.key = std::move(copy);
    extras.key_hash = hash;
}

void RecordArena::RestoreKey(RecordHandle record, std::string_view key) {
    SetKey(record, key);
    ExtrasOf(record).filing_key = key;
    At(record)->hash = HashFold(key);
}

// From here on the keys are kept beside the record.
void RecordArena::TakeOwnKey(RecordHandle record) {
    if (HasOwnKey(record)) return;
    std::string key = ComposeKey(record);
    std::string filing_key = key;
    Extras& extras = ExtrasOf(record);
    own_keys_.emplace(FilingHash(record), record);
    extras.key = std::move(key);
    extras.key_hash = FilingHash(record);
    extras.filing_key = std::move(filing_key);
    At(record)->flags |= kOwnKey;
}

RecordArena::Extras& RecordArena::ExtrasOf(RecordHandle record) {
    Extras& extras = extras_[record];
    At(record)->flags |= kExtras;
    return extras;
}

const RecordArena::Extras* RecordArena::FindExtras(RecordHandle record) const {
    if ((At(record)->flags & kExtras) == 0) return nullptr;
    return &extras_.find(record)->second;
}

// --- counts of values

bool RecordArena::AnyCounts() const {
    return std::any_of(counts_.begin(), counts_.end(),
                       [](const auto& counts) { return counts != nullptr; });
}

template <class Change>
void RecordArena::ChangeCounts(RecordHandle record, const FieldMarks& fields,
                               Change change) noexcept {
    try {
        for (int field = 0; field < kFieldCount; ++field) {
            ValueCounts* counts = counts_[Index(field)].get();
            if (counts != nullptr && fields[Index(field)]) (counts->*change)(Field(record, field));
        }
    } catch (...) {
        for (auto& counts : counts_) counts.reset();
    }
}

void RecordArena::MakeCounts(int field, std::span<const RecordHandle> records) {
    // The memory of some records ahead is fetched meanwhile: waiting for it would take most of the
    // time.
    constexpr std::size_t kAhead = 8;
    auto counts = std::make_unique<ValueCounts>();
    std::array<std::uint32_t, kAhead> hashes{};
    for (std::size_t i = 0; i < records.size() + kAhead; ++i) {
        const std::size_t slot = i % kAhead;
        if (i >= kAhead) counts->AddHashed(Field(records[i - kAhead], field), hashes[slot]);
        if (i + kAhead < records.size()) PrefetchLine(Block(records[i + kAhead]));
        if (i < records.size()) {
            hashes[slot] = HashFold(Field(records[i], field));
            counts->Prefetch(hashes[slot]);
        }
    }
    for (const RecordHandle record : records) At(record)->counted = true;
    counts_[Index(field)] = std::move(counts);
}

void RecordArena::CountIn(RecordHandle record) noexcept {
    if (!AnyCounts()) return;
    At(record)->counted = true;
    ChangeCounts(record, kEveryField, &ValueCounts::Add);
}

void RecordArena::CountOut(RecordHandle record) noexcept {
    if (!Counted(record)) return;
    ChangeCounts(record, kEveryField, &ValueCounts::Remove);
    At(record)->counted = false;
}

// --- objects and what is kept beside

std::shared_ptr<CVLRecord> RecordArena::Object(const std::shared_ptr<RecordArena>& arena,
                                               RecordHandle record) {
    HostedObjects& objects = arena->objects_;
    if (HostedObject* const object = objects.Find(record)) {
        return static_cast<CVLRecord*>(object)->shared_from_this();
    }
    objects.ReserveOneMore();
    if (!arena->objects_memory_) arena->objects_memory_ = ObjectPool::Make();
    auto object = std::allocate_shared<CVLRecord>(PoolAllocator<CVLRecord>(*arena->objects_memory_),
                                                  arena, record);
    objects.Insert(*object);
    return object;
}

std::shared_ptr<CVLAttachmentSet> RecordArena::Attachments(RecordHandle record, bool make) {
    const Extras* extras = FindExtras(record);
    if (extras != nullptr && extras->attachments) return extras->attachments;
    if (!make) return nullptr;
    auto attachments = std::make_shared<CVLAttachmentSet>(session_);
    ExtrasOf(record).attachments = attachments;
    return attachments;
}

void RecordArena::Attachments(RecordHandle record, std::shared_ptr<CVLAttachmentSet> attachments) {
    if (attachments) attachments->JoinSession(session_);
    ExtrasOf(record).attachments = std::move(attachments);
}

bool RecordArena::HasAttachments(RecordHandle record) const {
    const Extras* extras = FindExtras(record);
    return extras != nullptr && extras->attachments && extras->attachments->Count() > 0;
}

std::shared_ptr<PropertyChangeEvent> RecordArena::ChangeEvent(RecordHandle record, bool make) {
    const Extras* extras = FindExtras(record);
    if (extras != nullptr && extras->change_event) return extras->change_event;
    if (!make) return nullptr;
    auto event = std::make_shared<PropertyChangeEvent>();
    ExtrasOf(record).change_event = event;
    return event;
}

// --- stored form

bool RecordArena::WriteImage(RecordHandle record, PropertyBagWriter& bag,
                             std::uint32_t leaf) const {
    const Header* const header = At(record);
    const Payload payload = PayloadOf(record);
    const std::size_t size = payload.size();
    std::size_t units = UnitsFor(kHeaderSize + size);
    const bool large = units > kMaxInlineUnits;
    const std::size_t prefix = large ? sizeof(std::uint32_t) : 0;
    if (large) units = UnitsFor(kHeaderSize + prefix + size);

    std::uint8_t* const image = bag.Extend(units * kUnit);
    std::uint8_t* const end = image + units * kUnit;
    std::memset(end - kUnit, 0, kUnit);
    StoreLittle(image, leaf);
    StoreLittle(image + 4, header->hash);
    StoreLittle(image + 8, static_cast<std::uint32_t>(header->n_key));
    StoreLittle(image + 12, std::uint16_t{1});
    StoreLittle(image + 14, static_cast<std::uint16_t>(large ? 0 : units));
    StoreLittle(image + 16, header->parts);
    image[18] = header->flags & (kWidthMask | kNotAscii);
    image[19] = 0;
    if (large) StoreLittle(image + kHeaderSize, static_cast<std::uint32_t>(units));
    std::memcpy(image + kHeaderSize + prefix, payload.ends, size);
    return !large && RoundToClass(units) == units;
}

namespace {

[[noreturn]] void RefuseImage(const char* what) {
    throw DamagedState(std::string("record image: ") + what);
}

}  // namespace

// A record's image that has been found to be sound.
struct RecordArena::Image {
    std::uint8_t* bytes;
    std::size_t units;
    Payload payload;
    std::uint16_t parts;
    bool fits_in_place;  // a block of this size and layout could have been made here
};

RecordArena::Image RecordArena::CheckImage(std::span<std::uint8_t> images) {
    if (images.size() < 4 * kUnit) RefuseImage("cut off");
    std::uint8_t* const image = images.data();
    const std::uint16_t inline_units = LoadLittle<std::uint16_t>(image + 14);
    const std::size_t prefix = inline_units == 0 ? sizeof(std::uint32_t) : 0;
    const std::size_t units =
        inline_units == 0 ? LoadLittle<std::uint32_t>(image + kHeaderSize) : inline_units;
    if (units < 4 || units > images.size() / kUnit) RefuseImage("its size is beyond the array");
    const std::uint8_t flags = image[18];
    const std::uint16_t parts = LoadLittle<std::uint16_t>(image + 16);
    if ((flags & ~(kWidthMask | kNotAscii)) != 0 || (flags & kWidthMask) == 3 || image[19] != 0) {
        RefuseImage("unknown flags");
    }
    ForEachPart(parts, [](int field) {
        if (field >= kFieldCount) RefuseImage("its key names a field that does not exist");
    });
    const Payload payload{image + kHeaderSize + prefix, flags & kWidthMask};
    const std::size_t room = units * kUnit - kHeaderSize - prefix;
    const std::size_t ends_size = static_cast<std::size_t>(kFieldCount) << payload.width;
    if (ends_size > room) RefuseImage("too short for its fields");
    if (!payload.EndsRise()) RefuseImage("its fields overlap");
    if (payload.size() > room) RefuseImage("a field ends beyond it");
    const bool fits_in_place = prefix == 0 && RoundToClass(units) == units &&
                               UnitsFor(kHeaderSize + payload.size()) == units;
    return {image, units, payload, parts, fits_in_place};
}

RecordHandle RecordArena::CopyImage(const Image& image) {
    std::array<std::string_view, kFieldCount> fields;
    std::uint32_t begin = 0;
    for (int i = 0; i < kFieldCount; ++i) {
        const std::uint32_t end = image.payload.End(i);
        fields[static_cast<std::size_t>(i)] = {image.payload.text() + begin, end - begin};
        begin = end;
    }
    const auto n_key = static_cast<std::int32_t>(LoadLittle<std::uint32_t>(image.bytes + 8));
    const RecordHandle record = Create(n_key, fields, {});
    At(record)->parts = image.parts;
    At(record)->hash = LoadLittle<std::uint32_t>(image.bytes + 4);
    AddReference(record);
    return record;
}

void RecordArena::AdoptBlocks(std::span<std::uint8_t> images, std::shared_ptr<void> owner) {
    const std::size_t units = images.size() / kUnit;
    const std::size_t spans = (units + kSlabUnits - 1) >> kSlabShift;
    if (std::uint64_t{spans} << kSlabShift >= kNoHandle) throw std::bad_alloc();
    slabs_.reserve(spans);
    for (std::size_t i = 0; i < spans; ++i) {
        slabs_.push_back(images.data() + i * kSlabUnits * kUnit);
    }
    adopted_ = std::move(owner);
    memory_ += images.size();
}

std::vector<RecordHandle> RecordArena::Adopt(std::span<std::uint8_t> images,
                                             std::shared_ptr<void> owner) {
    AdoptBlocks(images, std::move(owner));
    std::vector<RecordHandle> records;
    records.reserve(images.size() / kTypicalImage);
    for (std::size_t at = 0; at < images.size();) {
        const Image image = CheckImage(images.subspan(at));
        if (!image.fits_in_place) {
            records.push_back(CopyImage(image));
        } else {
            records.push_back(static_cast<RecordHandle>(at / kUnit));
            *At(records.back()) = {
                0,
                LoadLittle<std::uint32_t>(image.bytes + 4),
                static_cast<std::int32_t>(LoadLittle<std::uint32_t>(image.bytes + 8)),
                1,
                static_cast<std::uint16_t>(image.units),
                image.parts,
                image.bytes[18],
                0};
        }
        at += image.units * kUnit;
    }
    return records;
}

void RecordArena::CheckAdopted(std::span<const RecordHandle> records) const {
    for (const RecordHandle record : records) {
        const Payload payload = PayloadOf(record);
        if (tavolin::IsAscii({payload.text(), payload.End(kFieldCount - 1)}) != IsAscii(record)) {
            RefuseImage("its text is not of the kind that it is said to be");
        }
        const JoinedParts key(At(record)->parts, [&](int field) { return payload.Field(field); });
        const std::uint32_t hash = HashFold(
            HasOwnKey(record) ? std::string_view(FindExtras(record)->filing_key) : key.text());
        if (hash != FilingHash(record)) RefuseImage("it is filed under another key than its own");
    }
}

}  // namespace tavolin
