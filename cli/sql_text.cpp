#include "cli/sql_text.h"

#include <algorithm>
#include <iterator>

#include "cli/failure.h"
#include "tavolin/base/text.h"
#include "tavolin/base/utf8.h"

namespace tavolin::cli {
namespace {

constexpr std::size_t kLongestName = 63;  // bytes; PostgreSQL cuts longer ones

bool Storable(const Utf8Unit& unit) {
    return unit.well_formed && unit.value != 0 && !IsSurrogate(unit.value);
}

bool AllStorable(std::string_view text) {
    if (IsAscii(text)) return text.find('\0') == text.npos;
    bool all = true;
    ForEachUnit(text, [&](const Utf8Unit& unit) { all = all && Storable(unit); });
    return all;
}

std::string Replaced(std::string_view text, std::string_view what, std::string_view with) {
    std::string out;
    for (std::size_t at; (at = text.find(what)) != text.npos;) {
        out.append(text.substr(0, at)).append(with);
        text.remove_prefix(at + what.size());
    }
    return out.append(text);
}

std::string Literal(std::string_view text) {
    return std::string("'").append(Replaced(text, "'", "''")).append("'");
}

// A character that is not in the text.
std::string Absent(std::string_view text) {
    for (char32_t c = '~'; c < 0x110000; c = c == '~' ? U'\uE000' : c + 1) {
        std::string candidate;
        AppendUtf8(c, candidate);
        if (text.find(candidate) == text.npos) return candidate;
    }
    throw CommandFailure("a text holds every character there is, and line breaks between them");
}

std::string Cut(std::string_view name, std::size_t size) {
    if (name.size() <= size) return std::string(name);
    while (!BeginsUnit(name, size)) --size;
    return std::string(name.substr(0, size));
}

}  // namespace

SqlText::SqlText(std::string_view text) : given(text), exact(AllStorable(text)) {
    if (exact) return;
    ForEachUnit(text, [&, at = std::size_t{0}](const Utf8Unit& unit) mutable {
        if (Storable(unit)) {
            changed += text.substr(at, unit.length);
        } else {
            AppendUtf8(kReplacementCharacter, changed);
        }
        at += unit.length;
    });
}

// The shell of SQLite reads lines and takes a carriage return at the end of one away, inside of a
// text too. So none stands there.
void AppendLiteral(const SqlText& text, std::string& out) {
    const std::string_view view = text.view();
    if (view.find("\r\n") == view.npos) {
        if (view.find('\'') == view.npos) {
            out.append("'").append(view).append("'");
        } else {
            out += Literal(view);
        }
        return;
    }
    const std::string mark = Absent(view);
    out += "replace(" + Literal(Replaced(view, "\r\n", mark + "\n")) + ", '" + mark + "', '\r')";
}

std::string QuotedName(std::string_view name) { return '"' + Replaced(name, "\"", "\"\"") + '"'; }

bool SqlNames::Reserved(const std::string& folded) const {
    if (of_ == Of::kTables) {
        return folded.starts_with("sqlite_") || folded.starts_with("pg_") ||
               folded.starts_with("tavolin_");
    }
    static constexpr std::string_view kSystem[] = {"ctid", "xmin", "xmax",
                                                   "cmin", "cmax", "tableoid"};
    return folded.starts_with("tavolin_") ||
           std::find(std::begin(kSystem), std::end(kSystem), folded) != std::end(kSystem);
}

std::string SqlNames::Take(std::string_view wanted, const std::string& otherwise) {
    const SqlText storable(wanted);
    std::string name(wanted.empty() ? std::string_view(otherwise) : storable.view());
    std::replace_if(
        name.begin(), name.end(),
        [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }, '_');
    if (Reserved(Fold(name))) name.insert(0, of_ == Of::kTables ? "table_" : "field_");
    const std::string base = name;
    name = Cut(base, kLongestName);
    for (int i = 2; !taken_.insert(Fold(name)).second; ++i) {
        const std::string end = std::string("_").append(std::to_string(i));
        name = Cut(base, kLongestName - end.size()) + end;
    }
    return name;
}

}  // namespace tavolin::cli
