// The CSV reader: the same records whatever the buffer, and what it read reads the same again when
// it is written down as CSV.
#include <optional>

#include "cli/csv_reader.h"
#include "cli/failure.h"
#include "cli/words.h"
#include "fuzz/fuzz.h"

namespace tavolin::fuzz {
namespace {

using cli::CsvReader;

using Records = std::vector<std::vector<std::string>>;

struct Outcome {
    Records records;
    std::vector<std::uint64_t> lines;
    std::uint64_t bytes = 0;
    std::string failure;
    bool operator==(const Outcome&) const = default;
};

Outcome Read(std::string_view text, std::size_t step, std::size_t buffer) {
    Outcome outcome;
    try {
        CsvReader reader(cli::TextSource(text, step), buffer);
        while (reader.Next()) {
            Require(!reader.fields().empty(), "a record has a field");
            outcome.records.emplace_back(reader.fields().begin(), reader.fields().end());
            outcome.lines.push_back(reader.line());
        }
        outcome.bytes = reader.bytes_read();
    } catch (const cli::CsvError& error) {
        outcome.failure = std::to_string(error.line()) + ":" + std::to_string(error.column()) +
                          " " + error.what();
    }
    return outcome;
}

std::string Written(const Records& records) {
    std::string text;
    for (const auto& record : records) {
        for (const std::string& field : record) {
            text += '"';
            for (const char c : field) text += c == '"' ? "\"\"" : std::string(1, c);
            text += "\",";
        }
        text.back() = '\n';
    }
    return text;
}

}  // namespace
}  // namespace tavolin::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tavolin::fuzz;
    Input input(data, size);
    const std::size_t step = 1 + input.Byte() % 16u;
    const std::size_t buffer = input.Byte() % 32u;
    const auto rest = input.Rest();
    const std::string_view text(reinterpret_cast<const char*>(rest.data()), rest.size());

    const Outcome whole = Read(text, SIZE_MAX, std::size_t{1} << 16);
    Require(Read(text, step, buffer) == whole, "the buffer changes nothing");
    if (whole.failure.empty()) {
        Require(whole.bytes == text.size(), "every byte counts");
        Require(Read(Written(whole.records), step, buffer).records == whole.records,
                "what was read can be written and read again");
    }
    try {
        const auto names = tavolin::cli::SplitList(text);
        Require(whole.failure.empty() && whole.records.size() < 2, "a list is one record");
        Require(names.size() == (whole.records.empty() ? 0 : whole.records[0].size()),
                "a list has a name for each field");
    } catch (const tavolin::cli::UsageError&) {
        Require(!whole.failure.empty() || whole.records.size() > 1, "one record is a list");
    }
    return 0;
}
