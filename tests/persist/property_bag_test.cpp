#include "tavolin/persist/property_bag.h"

#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <sstream>
#include <stdexcept>

#include "tavolin/errors/error.h"
#include "tavolin/persist/checksum.h"
#include "tavolin/persist/little_endian.h"

namespace tavolin {
namespace {

using Bytes = std::vector<std::uint8_t>;

template <class Value>
concept Writable = requires(PropertyBagWriter& writer, Value value) {
    writer.Write("k", value);
};
static_assert(Writable<char*> && Writable<const char*> && Writable<std::string>);
static_assert(Writable<bool> && Writable<std::int32_t> && Writable<Date>);
static_assert(!Writable<std::uint8_t> && !Writable<std::int64_t> && !Writable<char>);
static_assert(!Writable<double> && !Writable<int*>);

// The bag that the description of the format shows.
Bytes ExampleBag() {
    PropertyBagWriter writer;
    writer.Write("k", "Albert");
    writer.Write("nk", 5);
    writer.Write("s", true);
    writer.WriteByte("t", 2);
    writer.Write("dd", Date{86400});
    writer.WriteObject("o", [&] { writer.Write("k", std::string()); });
    writer.WriteSeries("Note", 2,
                       [&](std::size_t i) { writer.Write("nk", static_cast<std::int32_t>(i)); });
    writer.WriteBlocks("rl", Bytes{0xAA, 0xBB});
    return std::move(writer).Finish();
}

// Reads everything that the example holds, in an order of its own.
void ReadExample(std::span<const std::uint8_t> bytes) {
    PropertyBagReader reader(bytes);
    reader.ReadSeries("Note", [&](std::size_t) { reader.ReadInt("nk"); });
    reader.ReadBlocks("rl");
    reader.ReadObject("o", [&] { reader.ReadText("k"); });
    reader.ReadText("k");
    reader.ReadByte("t");
    reader.ReadDate("dd");
    reader.ReadBool("s");
    reader.ReadInt("nk");
    reader.Has("none");
}

std::string Damage(const std::function<void()>& body) {
    try {
        body();
    } catch (const DamagedState& damage) {
        return damage.what();
    }
    return "";
}

// With the length and the checksum that the bytes ought to have.
Bytes Sealed(Bytes bytes) {
    StoreLittle<std::uint64_t>(bytes.data() + 24, bytes.size());
    StoreLittle(bytes.data() + 16, Checksum(std::span(bytes).subspan(24)));
    return bytes;
}

TEST(PropertyBag, HasTheDocumentedBytes) {
    std::ifstream file(TAVOLIN_SOURCE_DIR "/docs/file-format.md");
    ASSERT_TRUE(file);
    // The example's lines are "    offset  byte byte ...  | what they are".
    Bytes documented;
    for (std::string line; std::getline(file, line);) {
        std::size_t offset = 0;
        std::istringstream bytes(line.substr(0, line.find('|')));
        if (line.substr(0, 4) != "    " || line.find(" | ") == std::string::npos) continue;
        bytes >> std::hex >> offset;
        EXPECT_EQ(offset, documented.size()) << line;
        for (int byte = 0; bytes >> byte;) documented.push_back(static_cast<std::uint8_t>(byte));
    }
    EXPECT_EQ(ExampleBag(), documented);
}

// What the replay of the fuzz target does not come to.
TEST(PropertyBag, GivesBackLongTextsAndWhatIsAskedForInPlaceOfNothing) {
    PropertyBagWriter writer;
    writer.Reserve(100);
    writer.Write("long", std::string(100'000, 'x'));
    writer.Write("low", std::numeric_limits<std::int32_t>::min());
    writer.Write("date", Date{-5});
    writer.WriteObject("set", [&] { writer.Write("k", "inside"); });
    writer.Write("", "the empty key");
    const Bytes bag = std::move(writer).Finish();
    PropertyBagReader reader(bag);
    EXPECT_EQ(reader.ReadText(""), "the empty key");
    EXPECT_EQ(reader.ReadText("long"), std::string(100'000, 'x'));
    EXPECT_EQ(reader.ReadInt("low"), std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(reader.ReadDate("date").seconds, -5);
    EXPECT_EQ(reader.ReadText("none", "default"), "default");
    EXPECT_EQ(reader.ReadInt("none", -7), -7);
    EXPECT_TRUE(reader.ReadBlocks("none").empty() && !reader.Has("none"));
    EXPECT_FALSE(reader.ReadObject("none", [] { FAIL(); }));
    EXPECT_EQ(reader.ReadSeries("none", [](std::size_t) { FAIL(); }), 0u);
    EXPECT_TRUE(reader.ReadObject("set", [&] { EXPECT_FALSE(reader.Has("low")); }));
    // A body that throws leaves the reader at the object around.
    EXPECT_THROW(reader.ReadObject("set", [] { throw std::runtime_error(""); }),
                 std::runtime_error);
    EXPECT_EQ(reader.ReadText(""), "the empty key");
}

TEST(PropertyBag, BlocksBeginAtMultiplesOfEight) {
    for (std::size_t before = 0; before < 9; ++before) {
        PropertyBagWriter writer;
        writer.Write("t", std::string(before, 'x'));
        writer.BeginBlocks("empty");
        writer.EndBlocks();
        writer.BeginBlocks("b");
        Bytes expected;
        for (int i = 0; i < 3000; ++i) {  // in pieces, beyond any room kept in reserve
            const Bytes piece(static_cast<std::size_t>(i % 7), static_cast<std::uint8_t>(i));
            writer.Append(piece.data(), piece.size());
            *writer.Extend(1) = 0x55;
            expected.insert(expected.end(), piece.begin(), piece.end());
            expected.push_back(0x55);
        }
        const Bytes large(10'000, 9);
        writer.Append(large.data(), large.size());
        expected.insert(expected.end(), large.begin(), large.end());
        writer.EndBlocks();
        writer.Write("behind", 1);
        const Bytes bag = std::move(writer).Finish();
        PropertyBagReader reader(bag);
        EXPECT_TRUE(reader.ReadBlocks("empty").empty());
        const auto blocks = reader.ReadBlocks("b");
        EXPECT_EQ((blocks.data() - bag.data()) % 8, 0);
        EXPECT_TRUE(std::equal(blocks.begin(), blocks.end(), expected.begin(), expected.end()));
        EXPECT_EQ(reader.ReadInt("behind"), 1);
    }
}

// Bytes that were made to deceive: the checksum is right, the contents are not.
TEST(PropertyBag, SaysWhatIsWrongAndWhere) {
    struct Case {
        std::size_t at;
        std::uint8_t value;
        const char* message;
    };
    const Case cases[] = {
        {0x20, 0x27, "header: the key table is not where it is said to be"},
        {0x20, 0xFF, "header: the key table is not where it is said to be"},
        {0x8A, 0x60, "key table: an impossible number of keys"},
        {0x8A, 0x07, "key table: there are bytes behind it"},
        {0x9E, 0x7F, "key table: key 7 is cut off"},
        {0x28, 0x0B, "byte 40: there is no key 11"},
        {0x31, 0x80, "byte 49: there is no key 512"},
        {0x29, 0x0A, "k: there is no type 10"},
        {0x2A, 0x7F, "k: longer than what holds it"},
        {0x49, 0x01, "o: longer than what holds it"},
        {0x4F, 0xFF, "o: longer than what holds it"},
        {0x51, 0x05, "o/k: holds a byte in place of a text"},
        {0x52, 0x7F, "o/k: longer than what holds it"},
        {0x5D, 0x09, "Note: an impossible number of objects"},
        {0x5D, 0x01, "Note: there are bytes behind its last object"},
        {0x5D, 0x03, "Note: object 3 is longer than its series"},
        {0x6C, 0x07, "Note: object 2 is longer than its series"},
        {0x75, 0x05, "Note2/nk: holds a byte in place of an integer"},
        {0x7C, 0x03, "rl: longer than what holds it"},
        {0x83, 0xFF, "rl: longer than what holds it"},
    };
    for (const Case& test : cases) {
        Bytes bad = ExampleBag();
        bad[test.at] = test.value;
        EXPECT_EQ(Damage([&] { ReadExample(Sealed(bad)); }), test.message);
    }
    Bytes longer = ExampleBag();
    longer.push_back(0);
    EXPECT_EQ(Damage([&] { ReadExample(longer); }), "header: says 161 bytes, there are 162");
    Bytes newer = ExampleBag();
    newer[8] = 7;
    newer.resize(20);  // whatever else that version changed
    EXPECT_EQ(Damage([&] { ReadExample(newer); }),
              "header: written in version 7 of the format, which is newer than version 1, the "
              "newest known here");

    PropertyBagWriter writer;
    writer.WriteObject("objgl", [&] {
        writer.WriteSeries("List", 3, [&](std::size_t i) { writer.Write("f0", i == 3); });
    });
    const Bytes bag = std::move(writer).Finish();
    PropertyBagReader reader(bag);
    const auto read = [&] {
        reader.ReadObject("objgl", [&] {
            reader.ReadSeries("List", [&](std::size_t) { reader.ReadBool("f0"); });
            reader.ReadSeries("List", [&](std::size_t i) {
                if (i == 3) reader.ReadText("f0");
            });
        });
    };
    EXPECT_EQ(Damage(read), "objgl/List3/f0: holds a Boolean in place of a text");
}

void WriteNested(PropertyBagWriter& writer, std::size_t depth) {
    if (depth > 0) writer.WriteObject("o", [&] { WriteNested(writer, depth - 1); });
}

TEST(PropertyBag, LimitsKeys) {
    PropertyBagWriter writer;
    const auto write = [&](std::size_t i) { writer.Write(std::to_string(i), true); };
    for (std::size_t i = 0; i < kMaxPropertyKeys; ++i) write(i);
    EXPECT_THROW(write(kMaxPropertyKeys), std::length_error);
    const Bytes bag = std::move(writer).Finish();
    EXPECT_TRUE(PropertyBagReader(bag).ReadBool(std::to_string(kMaxPropertyKeys - 1)));
}

TEST(PropertyBag, LimitsNesting) {
    PropertyBagWriter too_deep;
    EXPECT_THROW(WriteNested(too_deep, kMaxPropertyDepth + 1), std::length_error);

    PropertyBagWriter writer;
    WriteNested(writer, kMaxPropertyDepth);
    Bytes bag = std::move(writer).Finish();
    std::size_t depth = 0;
    const auto dive = [&] {
        PropertyBagReader reader(bag);
        const std::function<void()> deeper = [&] { depth += reader.ReadObject("o", deeper); };
        deeper();
    };
    dive();
    EXPECT_EQ(depth, kMaxPropertyDepth);

    // One object more, around all others: its head of ten bytes stands before the old items.
    const auto key_table = LoadLittle<std::uint64_t>(bag.data() + 32);
    Bytes head(10);
    head[1] = static_cast<std::uint8_t>(PropertyType::kObject);
    StoreLittle<std::uint64_t>(head.data() + 2, key_table - 40);
    bag.insert(bag.begin() + 40, head.begin(), head.end());
    StoreLittle<std::uint64_t>(bag.data() + 32, key_table + 10);
    bag = Sealed(bag);
    EXPECT_NE(Damage(dive).find("nested too deep"), std::string::npos);
}

TEST(Checksum, IsFixedAndSeesEveryByteAndTheLength) {
    Bytes bytes;
    for (int i = 0; i < 33; ++i) bytes.push_back(static_cast<std::uint8_t>(i));
    // Stored in files, so the same for ever.
    EXPECT_EQ(Checksum({}), 0x97DFE7C1181977E1u);
    EXPECT_EQ(Checksum(bytes), 0xF57644D9FE4F012Fu);

    for (std::size_t size = 1; size <= 100; ++size) {
        Bytes zeros(size);
        const std::uint64_t sum = Checksum(zeros);
        EXPECT_NE(sum, Checksum(std::span(zeros).first(size - 1))) << size;
        for (std::size_t bit = 0; bit < 8 * size; ++bit) {
            zeros[bit / 8] = static_cast<std::uint8_t>(1 << bit % 8);
            EXPECT_NE(sum, Checksum(zeros)) << size << " bit " << bit;
            zeros[bit / 8] = 0;
        }
    }
}

}  // namespace
}  // namespace tavolin
