#include "tavolin/persist/database_file.h"

#include <gtest/gtest.h>

#include "tavolin/errors/error.h"
#include "tests/support/failing_file_system.h"

namespace tavolin {
namespace {

using Bytes = std::vector<std::uint8_t>;

class DatabaseFileTest : public testing::Test {
  protected:
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

TEST_F(DatabaseFileTest, HoldsADescriptorAndTheBytes) {
    WriteDatabaseFile(path_, Bytes{7, 8, 9});
    const Bytes expected = {0x11, 0x20, 1, 0, 3, 0, 0, 0, 0, 0, 0, 0, 7, 8, 9};
    EXPECT_EQ(FileSystem::Current().ReadFile(path_), expected);
    EXPECT_EQ(Bytes(ReadDatabaseFile(path_)), (Bytes{7, 8, 9}));
    WriteDatabaseFile(path_, {}, true);
    EXPECT_EQ(Bytes(ReadDatabaseFile(path_)), Bytes{});
    EXPECT_EQ(FileSystem::Current().FileSize(path_), 12u);
}

TEST_F(DatabaseFileTest, KeepsTheRestOfALongerFileUnlessCut) {
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

}  // namespace
}  // namespace tavolin
