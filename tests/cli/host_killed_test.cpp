// The program is killed while it replaces an export, at any moment.
#include "tests/cli/host_fixture.h"
#include "tests/support/mdb_checker.h"

namespace tavolin::cli {
namespace {

TEST_F(HostTest, AReplacedExportIsTheOldOneOrTheNewOneWheneverItIsKilled) {
    MakeShop();
    ASSERT_EQ(0, Run("other create").status);
    ASSERT_EQ(0, Run("other make-table Goods --fields ID --key ID").status);
    ASSERT_EQ(0, Run("shop export mdb out.mdb").status);
    const unsigned seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const auto what_is_there = [&] {
        const MdbChecker file(Read("out.mdb"));
        EXPECT_EQ(file.faults(), "");
        EXPECT_EQ(file.tables().size(), 1u);
        return file.tables().begin()->first;
    };
    int killed = 0;
    for (int i = 0; i < 60; ++i) {
        const std::string ms = std::to_string(100 + random() % 60).substr(1);
        const auto outcome =
            Run((i % 2 == 0 ? "other" : "shop") + std::string(" export mdb out.mdb --replace"), "",
                "", "timeout -s KILL 0.0" + ms + " " + Program());
        killed += outcome.status == 137;
        const std::string table = what_is_there();
        EXPECT_TRUE(table == "People" || table == "Goods") << table;
    }
    EXPECT_GT(killed, 0);
    // What it left there is in nobody's way.
    EXPECT_EQ(0, Run("other export mdb out.mdb --replace").status);
    EXPECT_EQ(what_is_there(), "Goods");
}

}  // namespace
}  // namespace tavolin::cli
