#include "cli/results.h"

#include <ostream>
#include <utility>

#include "cli/display_text.h"

namespace tavolin::cli {

std::string Counted(std::size_t count, std::string_view noun) {
    std::string text = std::to_string(count) + " ";
    if (count != 1 && noun.ends_with('y')) {
        return text.append(noun.substr(0, noun.size() - 1)).append("ies");
    }
    text.append(noun);
    if (count != 1) text.append(noun.ends_with("ch") ? "es" : "s");
    return text;
}

std::string CsvField(std::string_view value) {
    if (value.empty() || value.find_first_of(",\"\r\n") == value.npos) return std::string(value);
    std::string field = "\"";
    for (const char c : value) {
        if (c == '"') field += c;
        field += c;
    }
    return field += '"';
}

Results::Results(std::ostream& out, const ResultStyle& style, std::vector<std::string> headers)
    : out_(out), style_(style), headers_(std::move(headers)), table_(headers_) {
    if (style_.format == Format::kCsv && style_.header) PrintCsv(headers_);
}

void Results::Add(const std::vector<std::string>& row) {
    switch (style_.format) {
        case Format::kTable:
            table_.Add(row);
            break;
        case Format::kCsv:
            PrintCsv(row);
            break;
        case Format::kLines:
            PrintLines(row);
            break;
    }
    ++count_;
}

void Results::Finish(std::string_view noun) {
    if (style_.format != Format::kTable) return;
    if (count_ > 0) table_.Print(out_, style_.header, style_.width);
    if (style_.count && !noun.empty()) out_ << Counted(count_, noun) << '\n';
}

void Results::PrintCsv(const std::vector<std::string>& row) {
    // A line with one empty field in it would be passed over as an empty line.
    if (row.size() == 1 && row[0].empty()) {
        out_ << "\"\"\n";
        return;
    }
    for (std::size_t i = 0; i < row.size(); ++i) out_ << (i > 0 ? "," : "") << CsvField(row[i]);
    out_ << '\n';
}

void Results::PrintLines(const std::vector<std::string>& row) {
    if (count_ > 0) out_ << '\n';
    for (std::size_t i = 0; i < row.size(); ++i) {
        if (style_.header) out_ << Printable(headers_[i]) << ": ";
        out_ << Printable(row[i]) << '\n';
    }
}

}  // namespace tavolin::cli
