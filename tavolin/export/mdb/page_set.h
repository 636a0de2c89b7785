// A set of pages, kept as runs of neighbours.
#pragma once

#include <cstddef>
#include <vector>

#include "tavolin/export/mdb/page.h"

namespace tavolin::mdb {

class PageSet {
  public:
    struct Run {
        PageNumber first;
        PageNumber end;  // behind the last
    };

    // Every page must be above those that are in the set.
    void Add(PageNumber page) { AddRun(page, page + 1); }
    void AddRun(PageNumber first, PageNumber end) {
        if (first >= end) return;
        if (!runs_.empty() && runs_.back().end == first) {
            runs_.back().end = end;
        } else {
            runs_.push_back({first, end});
        }
    }

    bool empty() const { return runs_.empty(); }
    PageNumber first() const { return runs_.front().first; }
    PageNumber end() const { return runs_.back().end; }

    template <class Body>
    void ForEach(Body&& body) const {
        for (const Run& run : runs_) {
            for (PageNumber page = run.first; page < run.end; ++page) body(page);
        }
    }

  private:
    std::vector<Run> runs_;
};

}  // namespace tavolin::mdb
