#include "cli/failure.h"

#include <cstdio>
#include <exception>
#include <iostream>

#include "cli/display_text.h"

namespace tavolin::cli {
namespace {

// Lines after the first stand under the text of the first; names inside cannot steer the terminal.
std::string Indented(std::string_view text, std::string_view indent) {
    std::string result;
    while (true) {
        const std::size_t end = text.find_first_of("\r\n");
        result += Printable(text.substr(0, end));
        if (end == text.npos) return result;
        text.remove_prefix(end + (text.substr(end, 2) == "\r\n" ? 2 : 1));
        if (text.empty()) return result;
        result.append("\n").append(indent);
    }
}

std::string Number(std::int32_t number) {
    char hex[16];
    std::snprintf(hex, sizeof hex, "0x%08X", static_cast<unsigned>(number));
    return std::to_string(number) + (number < 0 ? " (" + std::string(hex) + ")" : "");
}

}  // namespace

void PrintError(std::ostream& out, const Error& error) {
    out << "error " << Number(error.number()) << ": " << Indented(error.description(), "    ")
        << '\n';
    if (!error.source().empty()) out << "  source: " << error.source() << '\n';
    if (!error.detail().empty()) {
        out << "  detail: " << Indented(error.detail(), "    ") << '\n';
    }
}

int ReportCurrentFailure(std::string_view place) {
    std::cout.flush();
    std::cerr << place;
    try {
        throw;
    } catch (const UsageError& error) {
        std::cerr << "error: " << Indented(error.what(), "    ") << '\n';
        return kUsage;
    } catch (const Cancelled& error) {
        std::cerr << Indented(error.what(), "    ") << '\n';
        return kInterruptedStatus;
    } catch (const Error& error) {
        PrintError(std::cerr, error);
    } catch (const std::exception& error) {
        std::cerr << "error: " << Indented(error.what(), "    ") << '\n';
    }
    return kFailure;
}

}  // namespace tavolin::cli
