// How lines become words, and words the parts of a command.
#include "cli/words.h"

#include <gtest/gtest.h>

#include "cli/arguments.h"
#include "cli/completion.h"
#include "cli/failure.h"

namespace tavolin::cli {
namespace {

using Words = std::vector<std::string>;

TEST(WordsTest, SplitsAsAShellDoes) {
    const std::pair<const char*, Words> cases[] = {
        {"", {}},
        {" \t ", {}},
        {"  # add T 1", {}},
        {"get T #1", {"get", "T", "#1"}},
        {"a  'b c'\t\"d e\"", {"a", "b c", "d e"}},
        {"'' \"\"", {"", ""}},
        {"a'b'\"c\"d", {"abcd"}},
        {R"(a\ b \' \\ 'c\' "d\"\\\n")", {"a b", "'", "\\", "c\\", "d\"\\\\n"}},
        {"x\\", {"x\\"}},
        {"'two\nlines'", {"two\nlines"}},
    };
    for (const auto& [line, expected] : cases) {
        const WordSplit split = SplitWords(line);
        EXPECT_EQ(expected, split.words) << line;
        EXPECT_FALSE(split.open_quote) << line;
    }
    EXPECT_TRUE(SplitWords("add T 'x").open_quote);
    EXPECT_TRUE(SplitWords("add T \"x\\\"").open_quote);
}

TEST(WordsTest, ListsMayQuoteTheirNames) {
    EXPECT_EQ((Words{"ID", "Last, first", "City"}), SplitList("ID,\"Last, first\", City "));
    EXPECT_THROW(SplitList("ID,\"x"), UsageError);
}

constexpr std::string_view kPattern = "TABLE VALUE... [--kind a|b] [--yes] [--from N]";

TEST(ArgumentsTest, SortsWordsByThePattern) {
    const Words words = {"T", "--kind=b", "-1", "--from", "7", "--", "--yes"};
    const Arguments arguments(kPattern, words);
    EXPECT_EQ("T", arguments["TABLE"]);
    EXPECT_EQ((Words{"-1", "--yes"}), arguments.All("VALUE"));
    EXPECT_EQ("b", arguments["--kind"]);
    EXPECT_EQ(7, arguments.Number("--from", 0));
    EXPECT_FALSE(arguments.Has("--yes"));
}

TEST(ArgumentsTest, RefusesWhatDoesNotFit) {
    const Words cases[] = {
        {"T"},
        {"T", "v", "--nope"},
        {"T", "v", "--kind", "c"},
        {"T", "v", "--kind"},
        {"T", "v", "--yes=1"},
        {"T", "v", "--yes", "--yes"},
    };
    for (const Words& words : cases) {
        EXPECT_THROW(Arguments(kPattern, words), UsageError) << words.back();
    }
    EXPECT_THROW(Arguments("TABLE", Words({"T", "more"})), UsageError);
    EXPECT_THROW(Arguments("T --fields NAMES", Words({"T"})), UsageError);
    EXPECT_THROW(Arguments(kPattern, Words({"T", "v", "--from", "x"})).Number("--from", 0),
                 UsageError);
}

TEST(CompletionTest, OffersWhatFitsThePlace) {
    const Names names = {{{"Cities", {"City", "Country"}}, {"People", {"ID", "Full name"}}},
                         {"ann", "bob"}};
    const std::pair<const char*, Words> cases[] = {
        {"", {}},  // all commands, see below
        {"up", {"update"}},
        {"export ", {"csv", "html", "mdb", "sql", "text"}},
        {"note s", {"set"}},
        {"log ", {"file", "off", "on", "report"}},
        {"log on rec", {"record-add", "record-update", "record-delete"}},
        {"list c", {"Cities"}},
        {"list --from 2 ", {"Cities", "People"}},
        {"list Cities --c", {"--count"}},
        {"attach T 1 p --kind so", {"sound"}},
        {"count Cities ", {"--format", "--no-header", "--no-pager", "--timing", "--quiet"}},
        {"count Cities --format j", {"json"}},
        {"find x --in People --field f", {"'Full name'"}},
        {"label People 'Full n", {"'Full name'"}},
        {"label People \"Full n", {"\"Full name\""}},
        {"add People f", {"'Full name="}},
        {"update cities 7 C", {"City=", "Country="}},
        {"link People ID C", {"Cities"}},
        {"set-user ", {"ann", "bob"}},
        {"notes b", {"bob"}},
        {"set for", {"format"}},
        {"set format c", {"csv"}},
        {"help exp", {"export"}},
        {"help export h", {"html"}},
        {"delete x y --",
         {"--no-cascade", "--format", "--no-header", "--no-pager", "--timing", "--quiet"}},
        {"list Cities -- -", {}},
        {"nonsense ", {}},
    };
    for (const auto& [line, expected] : cases) {
        const LineCompletion completion = CompleteLine(line, names);
        if (*line == '\0') {
            EXPECT_GT(completion.words.size(), 40u);
        } else {
            EXPECT_EQ(expected, completion.words) << line;
        }
    }
    EXPECT_EQ(13u, CompleteLine("label People 'Full n", names).begin);
}

}  // namespace
}  // namespace tavolin::cli
