#include "cli/dump_text.h"

#include <array>
#include <charconv>

#include "tavolin/base/utf8.h"

namespace tavolin::cli {
namespace {

// The bytes that stand for themselves between quotes, whatever is beside them.
constexpr std::array<bool, 256> kPlain = [] {
    std::array<bool, 256> plain{};
    for (std::size_t byte = 0x20; byte < 0x7F; ++byte) plain[byte] = true;
    plain['"'] = plain['\\'] = false;
    return plain;
}();

bool IsPlain(char byte) { return kPlain[static_cast<std::uint8_t>(byte)]; }

// What a screen would not show, or would take for a line break or a change of direction.
bool IsHidden(char32_t c) {
    return c < 0x20 || (c >= 0x7F && c < 0xA0) || c == 0xAD || c == 0x61C ||
           (c >= 0x200B && c <= 0x200F) || (c >= 0x2028 && c <= 0x202E) ||
           (c >= 0x2060 && c <= 0x206F) || c == 0xFEFF || (c >= 0xFFF0 && c <= 0xFFFB) ||
           c == 0xFFFE || c == 0xFFFF || IsSurrogate(c);
}

void AppendHex(std::uint32_t value, int digits, std::string& out) {
    for (int i = digits - 1; i >= 0; --i) out += "0123456789ABCDEF"[value >> (4 * i) & 0xF];
}

// Surrogates are escaped one by one, and so stay what they are.
void AppendUnit(const Utf8Unit& unit, std::string_view bytes, std::string& out) {
    if (!unit.well_formed) {
        out += "\\x";
        AppendHex(unit.value, 2, out);
    } else if (unit.value == '"' || unit.value == '\\') {
        out.append("\\").append(bytes);
    } else if (unit.value == '\n') {
        out += "\\n";
    } else if (unit.value == '\r') {
        out += "\\r";
    } else if (unit.value == '\t') {
        out += "\\t";
    } else if (IsHidden(unit.value)) {
        out += "\\u";
        AppendHex(unit.value, 4, out);
    } else {
        out += bytes;
    }
}

std::size_t PlainRun(std::string_view text) {
    std::size_t size = 0;
    while (size < text.size() && IsPlain(text[size])) ++size;
    return size;
}

}  // namespace

void AppendQuoted(std::string_view text, std::string& out) {
    out += '"';
    while (true) {
        const std::size_t plain = PlainRun(text);
        out += text.substr(0, plain);
        text.remove_prefix(plain);
        if (text.empty()) break;
        const Utf8Unit unit = FirstUnit(text);
        AppendUnit(unit, text.substr(0, unit.length), out);
        text.remove_prefix(unit.length);
    }
    out += '"';
}

void DumpLine::SkipBlanks() {
    while (!rest_.empty() && (rest_.front() == ' ' || rest_.front() == '\t')) {
        rest_.remove_prefix(1);
    }
}

std::string_view DumpLine::Word() {
    if (AtText()) Fail("a text stands where a word belongs");
    const std::string_view word = rest_.substr(0, rest_.find_first_of(" \t\""));
    rest_.remove_prefix(word.size());
    SkipBlanks();
    return word;
}

bool DumpLine::TakeWord(std::string_view word) {
    const std::string_view before = rest_;
    if (!AtText() && Word() == word) return true;
    rest_ = before;
    return false;
}

std::int32_t DumpLine::Number() {
    const std::string_view word = Word();
    std::int32_t number = 0;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
    if (error != std::errc() || end != word.data() + word.size() || word.empty()) {
        Fail(word.empty() ? "a number is missing" : std::string(word) + " is no 32-bit number");
    }
    return number;
}

std::string DumpLine::Text() {
    std::string text;
    TextInto(text);
    return text;
}

void DumpLine::TextInto(std::string& into) {
    into.clear();
    if (!AtText()) Fail("a text between quotes is missing");
    rest_.remove_prefix(1);
    while (true) {
        const std::size_t plain = PlainRun(rest_);
        into += rest_.substr(0, plain);
        rest_.remove_prefix(plain);
        if (rest_.empty()) Fail("the text does not end in this line");
        if (rest_.front() == '"') break;
        TakeCharacter(into);
    }
    rest_.remove_prefix(1);
    if (!rest_.empty() && rest_.front() != ' ' && rest_.front() != '\t') {
        Fail("a text ends and something follows without a blank");
    }
    SkipBlanks();
}

void DumpLine::TakeCharacter(std::string& into) {
    if (rest_.front() == '\\') {
        rest_.remove_prefix(1);
        return TakeEscape(into);
    }
    const Utf8Unit unit = FirstUnit(rest_);
    if (!unit.well_formed || IsSurrogate(unit.value)) Fail("the text is not UTF-8");
    if (unit.value < 0x20) Fail("a control character stands in the text as it is");
    into += rest_.substr(0, unit.length);
    rest_.remove_prefix(unit.length);
}

void DumpLine::TakeEscape(std::string& into) {
    const char kind = rest_.empty() ? '\0' : rest_.front();
    if (!rest_.empty()) rest_.remove_prefix(1);
    switch (kind) {
        case '"':
        case '\\':
            into += kind;
            return;
        case 'n':
            into += '\n';
            return;
        case 'r':
            into += '\r';
            return;
        case 't':
            into += '\t';
            return;
        case 'x':
            into += static_cast<char>(Hex(2));
            return;
        case 'u':
            AppendUtf8(Hex(4), into);
            return;
        default:
            Fail("a backslash is followed by none of \" \\ n r t x u");
    }
}

std::uint32_t DumpLine::Hex(std::size_t digits) {
    const std::string_view text = rest_.substr(0, digits);
    std::uint32_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, 16);
    if (error != std::errc() || text.size() != digits || end != text.data() + digits) {
        Fail("an escape needs " + std::to_string(digits) + " hexadecimal digits");
    }
    rest_.remove_prefix(digits);
    return value;
}

void DumpLine::Finish() const {
    if (!Done())
        Fail("there is something behind the end of the line's meaning: " +
             std::string(rest_.substr(0, 40)));
}

}  // namespace tavolin::cli
