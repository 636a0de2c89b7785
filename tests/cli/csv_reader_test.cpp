#include "cli/csv_reader.h"

#include <gtest/gtest.h>

#include <string>

namespace tavolin::cli {
namespace {

// Records as "LINE:field|field" and, at an error, "!LINE:COLUMN what".
std::string Read(std::string_view text, std::size_t step, std::size_t buffer) {
    std::string result;
    try {
        CsvReader reader(TextSource(text, step), buffer);
        while (reader.Next()) {
            result += std::to_string(reader.line()) + ":";
            for (std::size_t i = 0; i < reader.fields().size(); ++i) {
                result.append(i > 0 ? "|" : "").append(reader.fields()[i]);
            }
            result += ";";
        }
    } catch (const CsvError& error) {
        result += "!" + std::to_string(error.line()) + ":" + std::to_string(error.column()) + " " +
                  error.what();
    }
    return result;
}

struct CsvCase {
    const char* text;
    const char* expected;
};

constexpr CsvCase kCases[] = {
    {"", ""},
    {"a,b\nc,d\n", "1:a|b;2:c|d;"},
    {"a,b\r\nc,d", "1:a|b;2:c|d;"},
    {"a\rb\r\rc\r\n\r\nd", "1:a;2:b;4:c;6:d;"},
    {",\n,,", "1:|;2:||;"},
    {"\xEF\xBB\xBF\"a\",b", "1:a|b;"},
    {"\xEF\xBB\xBF", ""},
    {"\"a,b\",\"c\"\"d\"\"\"\n\"\"", "1:a,b|c\"d\";2:;"},
    {"\"x\ny\",1\n\"x\r\ny\r\",2\nz", "1:x\ny|1;3:x\r\ny\r|2;6:z;"},
    {"a \"b\" c,d", "1:a \"b\" c|d;"},
    {"\xC3\xA9,\xF0\x9F\x98\x80\n", "1:\xC3\xA9|\xF0\x9F\x98\x80;"},
    {"a\n\n\"x\ny", "1:a;!3:1 a quote that is never closed"},
    {"a,\"b\"c", "!1:2 text after the closing quote"},
    {"a\nb,x\xFFy", "1:a;!2:2 byte 2 of the field, \\xFF, is not UTF-8"},
    {"\"\"\"\xC3\"", "!1:1 byte 2 of the field, \\xC3, is not UTF-8"},
    {"\xED\xA0\x80", "!1:1 byte 1 of the field, \\xED, is not UTF-8"},
};

// A buffer of four bytes makes every record cross its end somewhere.
TEST(CsvReaderTest, ReadsTheSameWhateverTheBuffer) {
    for (const CsvCase& c : kCases) {
        EXPECT_EQ(c.expected, Read(c.text, SIZE_MAX, 1 << 16)) << c.text;
        EXPECT_EQ(c.expected, Read(c.text, 1, 4)) << c.text;
        EXPECT_EQ(c.expected, Read(c.text, 3, 5)) << c.text;
    }
}

TEST(CsvReaderTest, CountsTheBytesOfAllRecords) {
    const std::string text = "\xEF\xBB\xBF" + std::string(300, 'a') + "\n\"b\nb\"\n";
    CsvReader reader(TextSource(text), 16);
    while (reader.Next()) {
    }
    EXPECT_EQ(text.size(), reader.bytes_read());
}

}  // namespace
}  // namespace tavolin::cli
