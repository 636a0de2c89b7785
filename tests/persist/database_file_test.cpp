// The database file around its bytes, and the scrambler of what is secret in them.
#include "tavolin/persist/database_file.h"

#include <gtest/gtest.h>

#include <random>

#include "tavolin/base/utf16.h"
#include "tavolin/errors/error.h"
#include "tavolin/persist/scrambler.h"
#include "tests/support/failing_file_system.h"

namespace tavolin {
namespace {

using Bytes = std::vector<std::uint8_t>;

struct DatabaseFileTest : testing::Test {
    std::string DamageIn(const Bytes& file) {
        FileSystem::Current().Write(path_, file);
        try {
            ReadDatabaseFile(path_);
        } catch (const DamagedState& damage) {
            return damage.what();
        }
        return "";
    }

    TemporaryFolder folder_;
    std::string path_ = folder_ / "x.cdb";
};

TEST_F(DatabaseFileTest, HoldsADescriptorTheBytesAndTheRestOfALongerFileUnlessCut) {
    WriteDatabaseFile(path_, Bytes{7, 8, 9});
    const Bytes expected = {0x11, 0x20, 1, 0, 3, 0, 0, 0, 0, 0, 0, 0, 7, 8, 9};
    EXPECT_EQ(FileSystem::Current().ReadFile(path_), expected);
    EXPECT_EQ(Bytes(ReadDatabaseFile(path_)), (Bytes{7, 8, 9}));
    WriteDatabaseFile(path_, {}, true);
    EXPECT_EQ(Bytes(ReadDatabaseFile(path_)), Bytes{});
    EXPECT_EQ(FileSystem::Current().FileSize(path_), 12u);
    WriteDatabaseFile(path_, Bytes{1, 2, 3, 4, 5});
    WriteDatabaseFile(path_, Bytes{9, 9});
    EXPECT_EQ(Bytes(ReadDatabaseFile(path_)), (Bytes{9, 9}));
    const Bytes whole = FileSystem::Current().ReadFile(path_);
    EXPECT_EQ(Bytes(whole.begin() + 12, whole.end()), (Bytes{9, 9, 3, 4, 5}));
    WriteDatabaseFile(path_, Bytes{1, 2, 3, 4, 5, 6, 7, 8});  // longer than what was there
    EXPECT_EQ(FileSystem::Current().FileSize(path_), 20u);
    WriteDatabaseFile(path_, Bytes{8}, true);
    EXPECT_EQ(FileSystem::Current().FileSize(path_), 13u);
}

TEST_F(DatabaseFileTest, RefusesWhatIsNotOneWholeArrayOfBytes) {
    const Bytes good = {0x11, 0x20, 1, 0, 3, 0, 0, 0, 0, 0, 0, 0, 7, 8, 9};
    struct Case {
        std::size_t at;
        std::uint8_t value;
        const char* message;
    };
    const Case cases[] = {
        {0, 8, "holds a value of type 8200"},
        {2, 2, "holds an array of 2 dimensions"},
        {4, 4, "cut off after 3 of 4 bytes"},
        {6, 0xFF, "cut off after 3 of 16711683 bytes"},
        {7, 0x80, "the size of its array is negative"},
    };
    EXPECT_EQ(DamageIn(good), "");
    for (const Case& test : cases) {
        Bytes damaged = good;
        damaged[test.at] = test.value;
        EXPECT_EQ(DamageIn(damaged), path_ + ": " + test.message);
    }
    for (std::size_t size = 0; size < good.size(); ++size) {
        EXPECT_NE(DamageIn(Bytes(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(size))),
                  "");
    }
}

TEST_F(DatabaseFileTest, AnArrayBeyondTheFormatTouchesNoFile) {
    const std::uint8_t byte = 0;
    const std::span<const std::uint8_t> huge(&byte, std::size_t{1} << 31);  // never read
    FailingFileSystem files;
    const ScopedFileSystem scope(files);
    try {
        WriteDatabaseFile(path_, huge);
        FAIL();
    } catch (const Error& error) {
        EXPECT_EQ(error.number(), kOverflow);
    }
    EXPECT_TRUE(files.calls().empty());
}

// By a stream of keys that begins anew with each text: 71, 67, 89, 83, 77, 71, 74, 79 ...
TEST(ScramblerTest, TreatsEachKindOfCodeUnit) {
    const struct {
        const char* what;
        std::string text, scrambled;
    } cases[] = {
        {"the keys", "mmmmmmmmmmmm", "*.4> *'\"*#,+"},
        {"of the page, to another of it", "€", "Ç"},          // 80 xor 71 = C7
        {"outside, to another outside", "Ā", "Ň"},            // 100 xor 71 = 147
        {"outside, but the other is of the page", "ĕ", "ĕ"},  // 115 xor 71 = 152
        {"a control character outside", "\xC2\x80", "\xC2\x80"},
        {"a pair draws two", "\U00010000G", "\xF0\xA1\xB1\x83\x1E"},
        {"an ill-formed byte draws one", "\xC3G", "\xC3\x04"},
        {"surrogates in three bytes", "\xED\xA0\x80\xED\xB0\x80", "\xED\xA1\x87\xED\xB1\x83"},
    };
    for (const auto& c : cases) EXPECT_EQ(ScrambleText(c.text), c.scrambled) << c.what;
}

TEST(ScramblerTest, IsItsOwnInverseForAllBytes) {
    std::mt19937 random(634);
    for (int i = 0; i < 100000; ++i) {
        std::string text;
        for (auto n = random() % 20; n > 0; --n) {
            const char16_t unit = static_cast<char16_t>(random() >> random() % 16);
            text += i % 2 ? FromUtf16(std::u16string(1, unit))
                          : std::string(1, static_cast<char>(random()));
        }
        const std::string scrambled = ScrambleText(text);
        ASSERT_EQ(ScrambleText(scrambled), text);
        ASSERT_EQ(ToUtf16(scrambled).size(), ToUtf16(text).size());
    }
    for (unsigned unit = 0; unit <= 0xFFFF; ++unit) {
        const std::string text = "ab" + FromUtf16(std::u16string(1, static_cast<char16_t>(unit)));
        ASSERT_EQ(ScrambleText(ScrambleText(text)), text) << unit;
    }
}

}  // namespace
}  // namespace tavolin
