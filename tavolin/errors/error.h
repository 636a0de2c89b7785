// The one exception type of the library.
//
//     try {
//         engine.GetTable("Orders");
//     } catch (const tavolin::Error& e) {
//         if (e.number() == tavolin::CVLErrorNum::GetTableNotFoundError()) ...
//     }
//
// Every public member reports a failure by throwing an Error and by nothing else. What still holds
// afterwards is said at each member; unless it says otherwise, nothing has changed.
#pragma once

#include <array>
#include <cstdint>
#include <exception>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "tavolin/base/export.h"

namespace tavolin {

inline constexpr std::string_view kLineBreak = "\r\n";

// A text made of the library's own words and of names, keys and values put into them. It can be had
// as it is, and with the line breaks inside the names turned into blanks, for the log file, where a
// name must not be able to start a line. Character literals are words, strings are names.
//
//     Message("User: ", user_name, " Is Not The DataBase Owner")
class TAVOLIN_API Message {
  public:
    template <class... Pieces>
    explicit Message(const Pieces&... pieces) {
        static_assert(sizeof...(pieces) <= kMostNames);
        text_.reserve((std::size_t{0} + ... + SizeOf(pieces)));
        (Add(pieces), ...);
    }

    const std::string& text() const { return text_; }
    std::string one_line() const;

  private:
    template <std::size_t N>
    static constexpr std::size_t SizeOf(const char (&)[N]) {
        return N - 1;
    }
    static std::size_t SizeOf(std::string_view name) { return name.size(); }

    template <std::size_t N>
    void Add(const char (&words)[N]) {
        text_.append(words, N - 1);
    }
    void Add(std::string_view name) {
        names_[name_count_++] = {text_.size(), name.size()};
        text_.append(name);
    }

    static constexpr std::size_t kMostNames = 8;
    struct Name {
        std::size_t at;
        std::size_t size;
    };
    std::string text_;
    std::array<Name, kMostNames> names_;  // where they lie in the text
    std::size_t name_count_ = 0;
};

// Copying and raising one again takes no memory, and making one can do without: where there is none
// for its texts, it has its number and source and the description of a lack of memory.
class TAVOLIN_API Error : public std::exception {
  public:
    // A run-time error: a small number with the platform's text and no source yet.
    explicit Error(std::int32_t run_time_number, std::string_view detail = {});
    // A source is cut after 63 bytes.
    Error(std::int32_t number, std::string_view source, const Message& message);
    Error(const Error&) = default;
    Error& operator=(const Error&) = default;

    // The library's number (see CVLErrorNum) or the run-time error's small one.
    std::int32_t number() const { return number_; }
    // The member that failed, as "CVLTableSet:Add Method".
    std::string source() const { return source_.data(); }
    const std::string& description() const { return texts_->description; }
    // What was wrong and where, when more is known than the description says; else empty.
    const std::string& detail() const { return texts_->detail; }
    const char* what() const noexcept override { return texts_->description.c_str(); }

    // The description as it stands in the log file.
    const std::string& log_text() const { return texts_->log_text; }
    // True from the throw until the first trap it passes: that trap's member raised it itself, and
    // the source that it stated stays.
    bool fresh() const { return fresh_; }
    void Settle() { fresh_ = false; }
    void Resource(std::string_view source);
    // The same failure under another number and source, as a member's own.
    Error As(std::int32_t number, std::string_view source) const;
    // Without memory for it the detail stays as it is.
    void AddDetail(std::string_view detail);

  private:
    struct Texts {
        std::string description;
        std::string log_text;
        std::string detail;
    };
    using SharedTexts = std::shared_ptr<const Texts>;
    static const SharedTexts& NoMemory();
    static SharedTexts Share(std::string_view description, std::string_view log_text,
                             std::string_view detail);
    static SharedTexts Share(const Message& message);
    void SetSource(std::string_view source);

    std::int32_t number_;
    std::array<char, 64> source_{};
    SharedTexts texts_;
    bool fresh_ = false;
};

// The run-time error numbers that the library raises itself.
enum RunTimeError : std::int32_t {
    kInvalidCall = 5,
    kOverflow = 6,
    kOutOfMemory = 7,
    kSubscriptOutOfRange = 9,
    kTypeMismatch = 13,
    kInternalError = 51,
    kBadFileName = 52,
    kFileNotFound = 53,
    kDeviceError = 57,
    kFileExists = 58,
    kDiskFull = 61,
    kPermissionDenied = 70,
    kPathAccessError = 75,
    kPathNotFound = 76,
    kObjectNotSet = 91,
    kIncompatibleFormat = 321,
    kDuplicateKey = 457,
    kCorruptedFile = 31037,
    kCancelled = 32755,
};

// Stored state that cannot be believed. `what()` says what was wrong and where. It leaves the
// library as run-time error 31037, or as 321 when a newer version wrote the state.
class TAVOLIN_API DamagedState : public std::exception {
  public:
    explicit DamagedState(std::string what, bool newer = false)
        : what_(std::move(what)), newer_(newer) {}
    const char* what() const noexcept override { return what_.c_str(); }
    bool newer() const { return newer_; }

  private:
    std::string what_;
    bool newer_;
};

}  // namespace tavolin
