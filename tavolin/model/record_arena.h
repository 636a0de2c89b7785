// Where records live: one block of memory a record, under a 32-bit handle.
//
// A block is a header, the ends of the ten fields, and the fields' texts one after another, so that
// "all fields" is one text already. It never moves, so a handle is good for as long as somebody
// refers to the record: a set that it stands in, the result of a search, an object that a host
// holds. A text that outgrows its block moves to one of its own. What few records have (a key of
// their own, attachments, event handlers) is kept beside, made on first use.
//
// A record set and the results of searches in it share one arena.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "tavolin/base/byte_buffer.h"
#include "tavolin/base/event.h"
#include "tavolin/base/export.h"
#include "tavolin/base/prefetch.h"
#include "tavolin/base/text.h"
#include "tavolin/model/field_texts.h"
#include "tavolin/model/hosted_objects.h"
#include "tavolin/model/object_pool.h"
#include "tavolin/model/types.h"
#include "tavolin/model/value_counts.h"
#include "tavolin/persist/little_endian.h"

namespace tavolin {

class CVLAttachmentSet;
class CVLRecord;
class PropertyBagWriter;
class Session;

using RecordHandle = std::uint32_t;

using PropertyChangeEvent = Event<std::shared_ptr<CVLRecord>, std::string, std::string>;

class RecordArena {
  public:
    explicit RecordArena(std::shared_ptr<Session> session);
    ~RecordArena();
    RecordArena(const RecordArena&) = delete;
    RecordArena& operator=(const RecordArena&) = delete;

    const std::shared_ptr<Session>& session() const { return session_; }
    void JoinSession(std::shared_ptr<Session> session);

    // A new record that nobody refers to yet. Its key is made of the fields that `primary_key`
    // names, all of them 0 to 9 or 99. Only memory can fail; nothing has been made then.
    RecordHandle Create(std::int32_t n_key, const FieldTexts& fields,
                        const PrimaryKeyType& primary_key);

    // Counts what refers to a record, apart from the object that a host holds. Without a reference
    // and without an object it is destroyed.
    void AddReference(RecordHandle record) noexcept;
    void Release(RecordHandle record) noexcept;
    // The same for many, in less time.
    void AddReferences(std::span<const RecordHandle> records) noexcept;
    void Release(std::span<const RecordHandle> records) noexcept;

    // Views hold until the record changes.
    std::string_view Field(RecordHandle record, int field) const;
    std::string_view AllFields(RecordHandle record) const;
    // All fields, and where among them one of them begins and ends.
    struct FieldPlace {
        std::string_view all;
        std::size_t begin;
        std::size_t end;
    };
    FieldPlace PlaceOf(RecordHandle record, int field) const;
    // For a walk over records that lie anywhere: has a record's first bytes fetched, for later.
    void Prefetch(RecordHandle record, std::size_t lines = 2) const {
        PrefetchLines(Block(record), lines);
    }
    // Every byte of every field is below 0x80.
    bool IsAscii(RecordHandle record) const { return (At(record)->flags & kNotAscii) == 0; }

    // Marks the fields that differ from `values` in more than letter case.
    std::array<bool, kFieldCount> Differing(RecordHandle record, const FieldTexts& values) const;
    // Sets the fields that `changed` marks, all or none.
    void SetFields(RecordHandle record, const FieldTexts& values,
                   const std::array<bool, kFieldCount>& changed);

    // A copy of all fields, in a block of its own. Putting it back and dropping it need no memory.
    struct KeptFields {
        RecordHandle block;
        std::uint8_t flags;
    };
    KeptFields KeepFields(RecordHandle record);
    void PutBackFields(RecordHandle record, KeptFields& kept) noexcept;
    void DropFields(KeptFields& kept) noexcept;

    std::int32_t NumberKey(RecordHandle record) const { return At(record)->n_key; }
    void NumberKey(RecordHandle record, std::int32_t n_key) { At(record)->n_key = n_key; }

    // The record's key as the host sees and sets it.
    std::string Key(RecordHandle record) const;
    void SetKey(RecordHandle record, std::string_view key);
    // For a record that is being loaded: it is filed under its own key.
    void RestoreKey(RecordHandle record, std::string_view key);
    // True when the key has been set, so that it may differ from the one that the record was filed
    // under.
    bool HasOwnKey(RecordHandle record) const { return (At(record)->flags & kOwnKey) != 0; }

    bool AnyOwnKeys() const { return !own_keys_.empty(); }
    // Calls body(record) for every record of the arena that has that key of its own.
    template <class Body>
    void ForEachWithOwnKey(std::string_view key, Body&& body) const {
        const std::uint32_t hash = HashFold(key);
        for (auto at = own_keys_.lower_bound({hash, 0}); at != own_keys_.end(); ++at) {
            if (at->first != hash) return;
            if (EqualFold(FindExtras(at->second)->key, key)) body(at->second);
        }
    }

    // The key that the record was filed under when it was made or loaded. It stays whatever becomes
    // of the fields and the key.
    std::string FilingKey(RecordHandle record) const;
    std::uint32_t FilingHash(RecordHandle record) const { return At(record)->hash; }
    bool FilingKeyEquals(RecordHandle record, std::string_view key) const;

    // What the set that the arena was made for keeps in the record itself.
    std::uint32_t Leaf(RecordHandle record) const { return At(record)->leaf; }
    void SetLeaf(RecordHandle record, std::uint32_t leaf) { At(record)->leaf = leaf; }
    bool Keyed(RecordHandle record) const { return (At(record)->flags & kKeyless) == 0; }
    void DropKey(RecordHandle record) { At(record)->flags |= kKeyless; }
    void TakeKey(RecordHandle record) { At(record)->flags &= static_cast<std::uint8_t>(~kKeyless); }

    // Counts of the values of a field, over the records of the set that the arena was made for. Who
    // needs them has them made, by a walk over those records; from then on the set tells which
    // records come and go, and changes of fields are followed. When memory runs out on the way, all
    // counts are dropped: whoever needs them next makes them again.
    const ValueCounts* Counts(int field) const { return counts_[Index(field)].get(); }
    void MakeCounts(int field, std::span<const RecordHandle> records);
    void DropCounts(int field) noexcept { counts_[Index(field)].reset(); }
    void CountIn(RecordHandle record) noexcept;
    void CountOut(RecordHandle record) noexcept;
    bool Counted(RecordHandle record) const { return At(record)->counted; }

    // The object that a host holds: the same one for as long as anyone holds it.
    TAVOLIN_API static std::shared_ptr<CVLRecord> Object(const std::shared_ptr<RecordArena>& arena,
                                                         RecordHandle record);
    // The object is going.
    void Forget(RecordHandle record, HostedObject& object) noexcept {
        // The record itself is not looked at unless it must be: it may be far away.
        if (objects_.Erase(object) && At(record)->references == 0) Destroy(record);
    }

    // Nothing until one was given; Attachments(record, true) makes one.
    std::shared_ptr<CVLAttachmentSet> Attachments(RecordHandle record, bool make);
    void Attachments(RecordHandle record, std::shared_ptr<CVLAttachmentSet> attachments);
    // After this, putting others in their place needs no memory.
    void NeedAttachments(RecordHandle record) { ExtrasOf(record); }
    bool HasAttachments(RecordHandle record) const;
    // Whether any record has a key of its own, attachments or an event.
    bool AnyExtras() const { return !extras_.empty(); }

    // The record's event; nothing unless somebody asked to have it made.
    std::shared_ptr<PropertyChangeEvent> ChangeEvent(RecordHandle record, bool make);

    // A record's stored form: its block with its fields behind it, a multiple of eight bytes. The
    // layout is told in docs/file-format.md. True when it can be a record's block as it is, which
    // is the rule; `leaf` is then that of the record.
    bool WriteImage(RecordHandle record, PropertyBagWriter& bag, std::uint32_t leaf = 0) const;
    // Makes records of the images, one behind the other, each with one reference to it. The images
    // become the records' blocks; the arena holds `owner` for as long as it lives. Only for an
    // arena that has no record yet. Raises DamagedState for what is no image, and is good for
    // nothing then. An arena that goes before anything but keys and attachments has been put to its
    // records leaves the images so that they can be adopted again.
    std::vector<RecordHandle> Adopt(std::span<std::uint8_t> images, std::shared_ptr<void> owner);
    // The same for images that this process has written and kept, all of which can be blocks as
    // they are: nothing is checked. A record's handle is the offset of its image, in units.
    void AdoptBlocks(std::span<std::uint8_t> images, std::shared_ptr<void> owner);
    static constexpr std::size_t kUnit = 8;  // bytes, of which blocks are multiples
    // For records that have just been adopted: raises DamagedState when one is said to be filed
    // under another hash than its key's, or to hold nothing but ASCII when that is not so.
    void CheckAdopted(std::span<const RecordHandle> records) const;

    // The bytes that the arena has asked the machine for.
    std::size_t memory() const { return memory_; }

  private:
    // The first bytes of a block.
    struct Header {
        std::uint32_t leaf;
        std::uint32_t hash;  // of the folded filing key
        std::int32_t n_key;
        std::uint16_t references;
        std::uint16_t units;  // of eight bytes, in the block
        std::uint16_t parts;  // the fields of the key, four bits each, 15 for none
        std::uint8_t flags;
        bool counted;  // in all counts that there are
    };
    static_assert(sizeof(Header) == 20);
    // In Header::flags. The width and kNotAscii reach the disk: do not change.
    enum Flag : std::uint8_t {
        kWidthMask = 0x03,  // an end of a field takes 1 << width bytes
        kNotAscii = 0x04,
        kKeyless = 0x08,
        kMoved = 0x10,  // the ends and the text are in a block of their own
        kOwnKey = 0x20,
        kExtras = 0x40,
    };
    // The ends of the fields and the text behind them.
    struct Payload {
        std::uint8_t* ends;
        int width;
        std::uint32_t End(int field) const {
            if (width == 0) return ends[field];
            return width == 1 ? LoadLittle<std::uint16_t>(ends + 2 * field)
                              : LoadLittle<std::uint32_t>(ends + 4 * field);
        }
        std::string_view Field(int field) const {
            const std::uint32_t begin = field == 0 ? 0 : End(field - 1);
            return {text() + begin, End(field) - begin};
        }
        // No field ends before the one in front of it.
        bool EndsRise() const;
        const char* text() const {
            return reinterpret_cast<const char*>(ends + (kFieldCount << width));
        }
        std::size_t size() const {
            return (static_cast<std::size_t>(kFieldCount) << width) + End(kFieldCount - 1);
        }
    };
    struct Extras {
        std::string filing_key;
        std::string key;
        std::uint32_t key_hash = 0;
        std::shared_ptr<CVLAttachmentSet> attachments;
        std::shared_ptr<PropertyChangeEvent> change_event;
    };

    std::uint8_t* Block(RecordHandle handle) const {
        return slabs_[handle >> kSlabShift] + (std::size_t{handle & kSlabMask} << 3);
    }
    Header* At(RecordHandle record) const { return reinterpret_cast<Header*>(Block(record)); }
    Payload PayloadOf(RecordHandle record) const;
    template <class Body>
    void ForEachAhead(std::span<const RecordHandle> records, Body&& body) const;

    struct Image;
    static Image CheckImage(std::span<std::uint8_t> images);
    RecordHandle CopyImage(const Image& image);

    RecordHandle Allocate(std::size_t units);
    void Free(RecordHandle block, std::size_t units) noexcept;
    void AddSlab(std::size_t units);

    class Recount;
    using FieldMarks = std::array<bool, kFieldCount>;
    static std::size_t Index(int field) { return static_cast<std::size_t>(field); }
    bool AnyCounts() const;
    template <class Change>
    void ChangeCounts(RecordHandle record, const FieldMarks& fields, Change change) noexcept;

    static void Fill(std::uint8_t* payload, int width, const FieldTexts& fields);
    RecordHandle AllocateMoved(std::size_t payload_size);
    void PlacePayload(RecordHandle record, std::span<const std::uint8_t> payload);
    void PlaceMoved(RecordHandle record, RecordHandle own) noexcept;
    void FreeMovedPayload(RecordHandle record) noexcept;
    std::string ComposeKey(RecordHandle record) const;
    Extras& ExtrasOf(RecordHandle record);
    const Extras* FindExtras(RecordHandle record) const;
    void TakeOwnKey(RecordHandle record);
    void Destroy(RecordHandle record) noexcept;

    static constexpr unsigned kSlabShift = 17;  // a slab spans 2^17 units, one MiB
    static constexpr std::uint32_t kSlabMask = (1u << kSlabShift) - 1;

    std::shared_ptr<Session> session_;
    // Every MiB of the handles' range; a block larger than that spans several.
    std::vector<std::uint8_t*> slabs_;
    std::vector<ByteBuffer> memory_blocks_;
    std::shared_ptr<void> adopted_;
    std::size_t memory_ = 0;
    std::uint64_t next_ = 0;  // the free end of the newest slab, in units
    std::uint64_t end_ = 0;
    std::array<std::uint32_t, 320> free_;  // heads of the lists of free blocks, by size class
    // The hashes of the records' own keys.
    std::set<std::pair<std::uint32_t, RecordHandle>> own_keys_;
    std::unordered_map<RecordHandle, Extras> extras_;
    HostedObjects objects_;
    ObjectPool::Pointer objects_memory_;  // from the first object on
    std::array<std::unique_ptr<ValueCounts>, kFieldCount> counts_;
};

inline RecordArena::Payload RecordArena::PayloadOf(RecordHandle record) const {
    std::uint8_t* ends = Block(record) + sizeof(Header);
    const std::uint8_t flags = At(record)->flags;
    // A block of its own begins with its size.
    if (flags & kMoved) ends = Block(LoadLittle<std::uint32_t>(ends)) + sizeof(std::uint32_t);
    return {ends, flags & kWidthMask};
}

inline std::string_view RecordArena::Field(RecordHandle record, int field) const {
    const Payload payload = PayloadOf(record);
    const std::uint32_t begin = field == 0 ? 0 : payload.End(field - 1);
    return {payload.text() + begin, payload.End(field) - begin};
}

inline std::string_view RecordArena::AllFields(RecordHandle record) const {
    const Payload payload = PayloadOf(record);
    return {payload.text(), payload.End(kFieldCount - 1)};
}

}  // namespace tavolin
