#include "cli/results.h"

#include <ostream>
#include <set>
#include <utility>

#include "cli/display_text.h"
#include "cli/json_text.h"

namespace tavolin::cli {

namespace {

// The headers as names of members, which must differ: a second "City" becomes "City 2".
std::vector<std::string> JsonNames(const std::vector<std::string>& headers) {
    std::set<std::string> taken(headers.begin(), headers.end());
    std::set<std::string> used;
    std::vector<std::string> names;
    for (std::string name : headers) {
        if (!used.insert(name).second) {
            const std::string stem = name + ' ';
            for (int i = 2; !taken.insert(name).second; ++i) name = stem + std::to_string(i);
            used.insert(name);
        }
        names.push_back(JsonText(name) + ':');
    }
    return names;
}

}  // namespace

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
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";  // is dropped in front of a file
    if (value.find_first_of(",\"\r\n") == value.npos && !value.starts_with(kByteOrderMark)) {
        return std::string(value);
    }
    std::string field = "\"";
    for (const char c : value) {
        if (c == '"') field += c;
        field += c;
    }
    return field += '"';
}

std::string CsvLine(const std::vector<std::string>& row) {
    // A line with one empty field in it would be passed over as an empty line.
    if (row.size() == 1 && row[0].empty()) return "\"\"\n";
    std::string line;
    for (std::size_t i = 0; i < row.size(); ++i) {
        if (i > 0) line += ',';
        line += CsvField(row[i]);
    }
    return line += '\n';
}

Results::Results(std::ostream& out, const ResultStyle& style, std::vector<std::string> headers)
    : out_(out),
      style_(style),
      headers_(std::move(headers)),
      numbers_(headers_.size()),
      table_(headers_) {
    if (style_.format == Format::kCsv && style_.header) out_ << CsvLine(headers_);
    if (style_.format == Format::kJson) names_ = JsonNames(headers_);
}

Results& Results::Numbers(std::initializer_list<std::size_t> columns) {
    for (const std::size_t column : columns) {
        numbers_[column] = true;
        table_.AlignRight(column);
    }
    return *this;
}

bool Results::wanted() const { return !out_.fail(); }

void Results::Add(const std::vector<std::string>& row) {
    switch (style_.format) {
        case Format::kTable:
            table_.Add(row);
            break;
        case Format::kCsv:
            out_ << CsvLine(row);
            break;
        case Format::kJson:
            PrintJson(row);
            break;
        case Format::kLines:
            PrintLines(row);
            break;
    }
    ++count_;
}

void Results::Finish(std::string_view noun) {
    if (style_.format != Format::kTable) return;
    if (count_ > 0) table_.Print(out_, {style_.header, style_.width, style_.fit});
    if (style_.count && !noun.empty()) out_ << Counted(count_, noun) << '\n';
}

void Results::PrintJson(const std::vector<std::string>& row) {
    out_ << '{';
    for (std::size_t i = 0; i < row.size(); ++i) {
        out_ << (i > 0 ? "," : "") << names_[i] << (numbers_[i] ? row[i] : JsonText(row[i]));
    }
    out_ << "}\n";
}

void Results::PrintLines(const std::vector<std::string>& row) {
    if (count_ > 0) out_ << '\n';
    for (std::size_t i = 0; i < row.size(); ++i) {
        if (style_.header) out_ << Printable(headers_[i]) << ": ";
        out_ << Printable(row[i]) << '\n';
    }
}

void PrintProperties(std::ostream& out, const ResultStyle& style, const Properties& properties,
                     std::string_view title) {
    if (style.format == Format::kTable) {
        Results results(out, style, {std::string(title), "Value"});
        for (const auto& [name, value] : properties) results.Add({name, value});
        return results.Finish();
    }
    std::vector<std::string> names;
    std::vector<std::string> values;
    for (const auto& [name, value] : properties) {
        names.push_back(name);
        values.push_back(value);
    }
    Results results(out, style, names);
    results.Add(values);
    results.Finish();
}

}  // namespace tavolin::cli
