// The lines of earlier sessions, in a file of the user's own.
#pragma once

#include <string>
#include <vector>

namespace tavolin::cli {

// Where it is: what TAVOLIN_HISTORY names, which is nowhere when that is set and empty; else a file
// in the user's folder for such things.
class History {
  public:
    History();

    // The lines that are kept, the newest last; none when they cannot be read.
    std::vector<std::string> Lines() const;
    // Keeps a line, unless it begins with a blank or is the one before once more. When it cannot be
    // kept nothing happens.
    void Add(const std::string& line);

    static constexpr std::size_t kMostLines = 1000;

  private:
    void Shorten(const std::vector<std::string>& lines) const;

    std::string path_;
    std::string last_;
};

}  // namespace tavolin::cli
