#include "cli/output.h"

#include <algorithm>
#include <iterator>

#include "cli/arguments.h"
#include "cli/failure.h"

namespace tavolin::cli {
namespace {

constexpr std::string_view kFormats[] = {"table", "csv", "json", "lines"};

struct OnOff {
    std::string_view name;
    bool Output::*flag;
};
constexpr OnOff kSwitches[] = {{"header", &Output::header},
                               {"pager", &Output::pager},
                               {"timing", &Output::timing},
                               {"quiet", &Output::quiet}};

[[noreturn]] void RaiseOneOf(std::string_view name, const std::vector<std::string>& values) {
    std::string all;
    for (const std::string& value : values) all += (all.empty() ? "" : ", ") + value;
    throw UsageError(std::string(name) + " is one of " + all);
}

}  // namespace

Output OutputOf(Output output, const Arguments& words) {
    if (const auto format = words.Find("--format")) ChangeSetting(output, "format", *format);
    if (words.Has("--no-header")) output.header = false;
    if (words.Has("--no-pager")) output.pager = false;
    if (words.Has("--timing")) output.timing = true;
    if (words.Has("--quiet")) output.quiet = true;
    return output;
}

std::vector<std::pair<std::string, std::string>> Settings(const Output& output) {
    std::vector<std::pair<std::string, std::string>> settings;
    settings.emplace_back("format", kFormats[static_cast<std::size_t>(output.format)]);
    for (const OnOff& each : kSwitches) {
        settings.emplace_back(each.name, output.*each.flag ? "on" : "off");
    }
    return settings;
}

void ChangeSetting(Output& output, std::string_view name, std::string_view value) {
    const std::vector<std::string> values = SettingValues(name);
    if (values.empty()) throw UsageError("there is no setting " + std::string(name));
    const auto found = std::find(values.begin(), values.end(), value);
    if (found == values.end()) RaiseOneOf(name, values);
    if (name == "format") output.format = static_cast<Format>(found - values.begin());
    for (const OnOff& each : kSwitches) {
        if (each.name == name) output.*each.flag = value == "on";
    }
}

std::vector<std::string> SettingValues(std::string_view name) {
    if (name == "format") return {std::begin(kFormats), std::end(kFormats)};
    const bool known = std::any_of(std::begin(kSwitches), std::end(kSwitches),
                                   [&](const OnOff& each) { return each.name == name; });
    return known ? std::vector<std::string>{"on", "off"} : std::vector<std::string>();
}

}  // namespace tavolin::cli
