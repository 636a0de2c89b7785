// Answers that are longer than the terminal, shown a page at a time.
#pragma once

#include <memory>
#include <streambuf>

namespace tavolin::cli {

// While one lives, what goes to std::cout waits until it ends, and from the line on that the
// terminal has no room for, all of it goes to the user's pager: PAGER, else less or more. Ctrl-C is
// the pager's then. Without a pager, or a terminal to show it on, nothing is changed.
//
// When the user leaves the pager before the end, std::cout fails until this ends.
class PagedOutput {
  public:
    PagedOutput();
    ~PagedOutput();
    PagedOutput(const PagedOutput&) = delete;
    PagedOutput& operator=(const PagedOutput&) = delete;

  private:
    class Buffer;

    std::unique_ptr<Buffer> buffer_;  // nothing when there is no paging
    std::streambuf* previous_ = nullptr;
};

}  // namespace tavolin::cli
