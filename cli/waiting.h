// Shows on a terminal that something takes its time: "sorting, 3 s", from the first second on.
//
//     const Waiting waiting("sorting");
//     table->Sort(field);
//
// Nothing else may be written to the error stream meanwhile.
#pragma once

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

namespace tavolin::cli {

class Waiting {
  public:
    // `stopping` is what it says behind that after Ctrl-C.
    explicit Waiting(std::string what, std::string stopping = "and will stop");
    ~Waiting();
    Waiting(const Waiting&) = delete;
    Waiting& operator=(const Waiting&) = delete;

  private:
    void ShowUntilOver();

    std::string what_;
    std::string stopping_;
    std::mutex mutex_;
    std::condition_variable over_changed_;
    bool over_ = false;
    std::thread thread_;  // none without a terminal
};

}  // namespace tavolin::cli
