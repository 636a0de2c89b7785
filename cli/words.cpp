#include "cli/words.h"

#include "cli/csv_reader.h"
#include "cli/failure.h"

namespace tavolin::cli {
namespace {

constexpr std::string_view kBlanks = " \t\r\n";

bool IsBlank(char c) { return kBlanks.find(c) != kBlanks.npos; }

class Splitter {
  public:
    explicit Splitter(std::string_view line) : line_(line) {}

    WordSplit Split() {
        while (SkipBlanks()) {
            result_.begins.push_back(at_);
            result_.words.push_back(Word());
            result_.ended = !result_.open_quote && at_ < line_.size();
        }
        return std::move(result_);
    }

  private:
    bool SkipBlanks() {
        while (at_ < line_.size() && IsBlank(line_[at_])) ++at_;
        return at_ < line_.size();
    }

    std::string Word() {
        std::string word;
        while (at_ < line_.size() && !IsBlank(line_[at_])) {
            const char c = line_[at_++];
            if (c == '\'' || c == '"') {
                Quoted(c, word);
            } else if (c == '\\' && at_ < line_.size()) {
                word += line_[at_++];
            } else {
                word += c;
            }
        }
        return word;
    }

    void Quoted(char quote, std::string& word) {
        while (at_ < line_.size()) {
            char c = line_[at_++];
            if (c == quote) return;
            if (c == '\\' && quote == '"' && at_ < line_.size() &&
                (line_[at_] == '"' || line_[at_] == '\\')) {
                c = line_[at_++];
            }
            word += c;
        }
        result_.open_quote = true;
    }

    std::string_view line_;
    std::size_t at_ = 0;
    WordSplit result_;
};

std::string_view Trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == text.npos) return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

}  // namespace

WordSplit SplitWords(std::string_view line) {
    const std::string_view text = Trimmed(line);
    if (text.empty() || text[0] == '#') return {};
    return Splitter(line).Split();
}

std::vector<std::string> SplitList(std::string_view list) {
    std::vector<std::string> names;
    try {
        CsvReader reader(TextSource(list));
        if (reader.Next()) {
            for (const std::string_view field : reader.fields()) names.emplace_back(Trimmed(field));
        }
        if (reader.Next()) throw UsageError("a list of names has one line");
    } catch (const CsvError& error) {
        throw UsageError(std::string("a list of names: ") + error.what());
    }
    return names;
}

}  // namespace tavolin::cli
