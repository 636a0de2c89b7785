#include "cli/json_text.h"

#include <cstdio>

#include "tavolin/base/utf8.h"

namespace tavolin::cli {
namespace {

std::string Escaped(char32_t c) {
    switch (c) {
        case '"':
            return "\\\"";
        case '\\':
            return "\\\\";
        case '\n':
            return "\\n";
        case '\r':
            return "\\r";
        case '\t':
            return "\\t";
    }
    char text[8];
    std::snprintf(text, sizeof text, "\\u%04X", static_cast<unsigned>(c & 0xFFFF));
    return text;
}

// The line separators too, which some readers take for the end of a line.
bool IsEscaped(char32_t c) {
    return c < 0x20 || c == '"' || c == '\\' || (c >= 0x7F && c < 0xA0) || c == 0x2028 ||
           c == 0x2029 || IsSurrogate(c);
}

}  // namespace

std::string JsonText(std::string_view text) {
    std::string json = "\"";
    while (!text.empty()) {
        const Utf8Unit unit = FirstUnit(text);
        if (!unit.well_formed) {
            json += "\xEF\xBF\xBD";
        } else if (IsEscaped(unit.value)) {
            json += Escaped(unit.value);
        } else {
            json.append(text.substr(0, unit.length));
        }
        text.remove_prefix(unit.length);
    }
    return json += '"';
}

}  // namespace tavolin::cli
