// The samples in the README are the ones that are compiled.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>

namespace {

std::string Contents(const std::string& name) {
    std::ifstream file(std::string(TAVOLIN_SOURCE_DIR) + "/" + name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

TEST(Readme, ShowsTheQuickstartAsItIsCompiled) {
    const std::string sample = Contents("examples/quickstart.cpp");
    ASSERT_FALSE(sample.empty());
    EXPECT_NE(Contents("README.md").find("```cpp\n" + sample + "```"), std::string::npos);
}

}  // namespace
