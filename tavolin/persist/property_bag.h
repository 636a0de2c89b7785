// A property bag: ordered keys with typed values and nested objects in one byte array. The layout
// is told byte by byte in docs/file-format.md.
//
//     PropertyBagWriter writer;
//     writer.Write("k", name);
//     writer.WriteObject("objn", [&] { notes.WriteProperties(writer); });
//     writer.WriteSeries("Note", 3, [&](std::size_t i) { notes[i - 1].WriteProperties(writer); });
//     ByteBuffer state = std::move(writer).Finish();
//
//     PropertyBagReader reader(state);  // refuses a damaged array as a whole
//     name = reader.ReadText("k");
//     reader.ReadObject("objn", [&] { notes.ReadProperties(reader); });
//     reader.ReadSeries("Note", [&](std::size_t i) { ... reader.ReadText("n") ... });
//
// The name of a key is stored once, however often it is used, and a series stores its prefix alone,
// standing for the keys prefix1, prefix2 ... Reading in the order of writing never searches.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <unordered_map>
#include <vector>

#include "tavolin/base/byte_buffer.h"
#include "tavolin/base/date.h"

namespace tavolin {

// The type of a stored value. The numbers are part of the file format: do not change.
enum class PropertyType : std::uint8_t {
    kText = 1,
    kFalse = 2,
    kTrue = 3,
    kInt = 4,
    kByte = 5,
    kDate = 6,
    kObject = 7,
    kSeries = 8,
    kBlocks = 9,
};

inline constexpr std::uint32_t kPropertyBagVersion = 1;
inline constexpr std::size_t kMaxPropertyKeys = 65535;  // different key names in one bag
inline constexpr std::size_t kMaxPropertyDepth = 64;    // objects within objects

// Whether the array carries a checksum over its contents. One that never leaves the process needs
// none; only a reader that is told so takes it.
enum class BagSeal { kNone, kChecksum };

// Writes keys in the order of the calls. A key should be written once within its object: a reader
// finds the first. Beyond the limits above std::length_error is raised; after that, or after any
// exception on the way, the writer is good for nothing but its destruction.
class PropertyBagWriter {
  public:
    explicit PropertyBagWriter(BagSeal seal = BagSeal::kChecksum);
    PropertyBagWriter(PropertyBagWriter&&) = default;
    PropertyBagWriter& operator=(PropertyBagWriter&&) = default;

    // Room for that many more bytes, so that what follows is not moved while it grows.
    void Reserve(std::size_t bytes) { out_.Reserve(out_.size() + bytes); }

    void Write(std::string_view key, std::string_view text);
    void Write(std::string_view key, const char* text) { Write(key, std::string_view(text)); }
    void Write(std::string_view key, bool value);
    void Write(std::string_view key, std::int32_t value);
    void Write(std::string_view key, Date value);
    // A number of another width must not become an integer, nor a pointer a Boolean, by accident.
    template <class Value>
    requires(std::is_arithmetic_v<Value> ||
             (std::is_pointer_v<Value> &&
              !std::is_convertible_v<Value, const char*>)) void Write(std::string_view key,
                                                                      Value value) = delete;
    void WriteByte(std::string_view key, std::uint8_t value);

    // An object under `key`; what body() writes into this writer is its contents.
    template <class Body>
    void WriteObject(std::string_view key, Body&& body) {
        const std::size_t start = BeginSized(key, PropertyType::kObject);
        body();
        EndSized(start);
    }

    // The objects prefix1 ... prefix<count>; body(i) with i from 1 to count writes the contents of
    // one. They must stand together, so the series is written by one call.
    template <class Body>
    void WriteSeries(std::string_view prefix, std::size_t count, Body&& body) {
        const std::size_t series = BeginSized(prefix, PropertyType::kSeries);
        PutVarint(count);
        for (std::size_t i = 1; i <= count; ++i) {
            const std::size_t start = BeginLength();
            body(i);
            EndSized(start);
        }
        EndSized(series);
    }

    // Raw bytes that begin at a multiple of eight from the start of the array, of a total that need
    // not be known beforehand. Between Begin and End only Append and Extend may be called.
    void BeginBlocks(std::string_view key);
    void Append(const void* bytes, std::size_t count);
    // Appends that many undefined bytes for the caller to fill; good until the next call.
    std::uint8_t* Extend(std::size_t count);
    void EndBlocks();
    // All of the above at once.
    void WriteBlocks(std::string_view key, std::span<const std::uint8_t> bytes);

    // The bytes between the start of the array and here: where the next item will begin.
    std::size_t size() const { return out_.size(); }

    BagSeal seal() const { return seal_; }

    // The finished array. Every object and block run must have ended.
    ByteBuffer Finish() &&;

  private:
    struct TextHash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const {
            return std::hash<std::string_view>{}(text);
        }
    };

    std::uint32_t KeyId(std::string_view key);
    std::uint32_t FindOrAddKey(std::string_view key);
    // Appends the item's head and `count` bytes for its value; returns where the value begins.
    std::uint8_t* BeginItem(std::string_view key, PropertyType type, std::size_t count);
    std::uint8_t* Grow(std::size_t count);
    void PutVarint(std::uint64_t number);
    std::size_t BeginSized(std::string_view key, PropertyType type);
    std::size_t BeginLength();
    void EndSized(std::size_t start);

    // A key, and the key that followed it last: objects of one shape repeat the sequence.
    struct Key {
        std::string_view name;
        std::uint32_t next;
    };
    BagSeal seal_;
    ByteBuffer out_;
    std::vector<Key> keys_;
    // Owns the names that keys_ points to.
    std::unordered_map<std::string, std::uint32_t, TextHash, std::equal_to<>> ids_;
    std::uint32_t last_key_ = 0;
    std::size_t depth_ = 0;
    std::size_t blocks_start_ = 0;
};

// Reads a bag where it lies; the array must outlive the reader and every view that it gives.
//
// The constructor checks the array as a whole: magic number, version, length, checksum and key
// table. Every member raises DamagedState for what cannot be believed, with the place as a path of
// keys ("objgl/List3/f0: ..."). A missing key gives the default; a key that holds another type is
// damage. Whatever the bytes are, nothing outside the array is read, the work of a call is at most
// one walk through the object's items, and no memory beyond the key table's is asked for.
class PropertyBagReader {
  public:
    explicit PropertyBagReader(std::span<const std::uint8_t> bytes);
    // The same for an array that TakeBlocks may give parts of away.
    explicit PropertyBagReader(std::shared_ptr<ByteBuffer> bytes,
                               BagSeal seal = BagSeal::kChecksum);
    PropertyBagReader(const PropertyBagReader&) = delete;
    PropertyBagReader& operator=(const PropertyBagReader&) = delete;

    // With kChecksum the array may come from anywhere, with kNone it never left the process.
    BagSeal seal() const { return seal_; }

    bool Has(std::string_view key);
    // A view into the array, or the default itself.
    std::string_view ReadText(std::string_view key, std::string_view default_text = {});
    bool ReadBool(std::string_view key, bool default_value = false);
    std::int32_t ReadInt(std::string_view key, std::int32_t default_value = 0);
    std::uint8_t ReadByte(std::string_view key, std::uint8_t default_value = 0);
    Date ReadDate(std::string_view key, Date default_value = {});
    // Begins at a multiple of eight from the start of the array; empty when missing.
    std::span<const std::uint8_t> ReadBlocks(std::string_view key);
    // The same for a caller that goes on to keep the bytes, and to change them, as long as it holds
    // their owner. They are copied only when the reader has not been given an array of its own.
    struct Blocks {
        std::span<std::uint8_t> bytes;
        std::shared_ptr<ByteBuffer> owner;
    };
    Blocks TakeBlocks(std::string_view key);

    // body() reads the object's own keys from this reader. False, and no call, when it is missing.
    template <class Body>
    bool ReadObject(std::string_view key, Body&& body) {
        if (!Find(key, PropertyType::kObject)) return false;
        EnterObject(key);
        const Leaving leaving(*this);
        body();
        return true;
    }

    // body(i) with i from 1 on reads the keys of the object prefix<i>. Gives their number, 0 when
    // the series is missing.
    template <class Body>
    std::size_t ReadSeries(std::string_view prefix, Body&& body) {
        if (!Find(prefix, PropertyType::kSeries)) return 0;
        const std::size_t count = EnterSeries(prefix);
        const Leaving leaving(*this);
        for (std::size_t i = 1; i <= count; ++i) {
            EnterNumbered(i);
            const Leaving leaving_one(*this);
            body(i);
        }
        CheckSeriesEnd();
        return count;
    }

    // For a reader of contents that finds values that do not go together: raises DamagedState with
    // the place, that of `key` within the current object.
    [[noreturn]] void Refuse(std::string_view key, std::string_view what) const;

  private:
    // The object being read. `next` is the item expected next.
    struct Frame {
        std::size_t begin = 0;
        std::size_t next = 0;
        std::size_t end = 0;
        std::string_view key;
        std::size_t number = 0;  // within a series
    };
    struct Item {
        std::string_view key;
        PropertyType type{};
        std::size_t value = 0;  // where the value's own bytes begin
        std::size_t size = 0;
        std::size_t end() const { return value + size; }
    };
    // Goes back to the enclosing object.
    class Leaving {
      public:
        explicit Leaving(PropertyBagReader& reader) : reader_(reader) {}
        ~Leaving() { --reader_.depth_; }
        Leaving(const Leaving&) = delete;
        Leaving& operator=(const Leaving&) = delete;

      private:
        PropertyBagReader& reader_;
    };

    PropertyBagReader(std::span<const std::uint8_t> bytes, BagSeal seal);
    void CheckHeader() const;
    void ReadKeyTable(std::size_t offset);
    Item ItemAt(std::size_t at) const;
    [[noreturn]] void RefuseItem(std::size_t at) const;
    [[noreturn]] void RefuseType(std::string_view key, PropertyType wanted) const;
    bool Find(std::string_view key);
    bool Search(std::string_view key, std::size_t at, std::size_t end);
    bool Find(std::string_view key, PropertyType type);
    void Enter(std::string_view key, std::size_t number, std::size_t begin, std::size_t end);
    void EnterObject(std::string_view key);
    std::size_t EnterSeries(std::string_view prefix);
    void EnterNumbered(std::size_t i);
    void CheckSeriesEnd() const;

    BagSeal seal_;
    std::span<const std::uint8_t> bytes_;
    std::shared_ptr<ByteBuffer> owner_;
    std::vector<std::string_view> keys_;
    std::vector<Frame> frames_;
    std::size_t depth_ = 0;  // frames_[0] is the bag itself
    Item found_;
};

}  // namespace tavolin
