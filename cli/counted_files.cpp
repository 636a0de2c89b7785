#include "cli/counted_files.h"

#include <algorithm>

#include "cli/failure.h"
#include "cli/terminal.h"

namespace tavolin::cli {

class CountedFiles::CountedFile final : public File {
  public:
    CountedFile(CountedFiles& files, std::unique_ptr<File> real)
        : files_(files), real_(std::move(real)) {}

    std::uint64_t Size() override { return real_->Size(); }
    std::size_t ReadAt(std::uint64_t offset, std::span<std::uint8_t> target) override {
        return real_->ReadAt(offset, target);
    }
    std::size_t Write(ByteView bytes) override {
        bytes = bytes.first(std::min(bytes.size(), kAtOnce));
        files_.Count(bytes.size());
        return real_->Write(bytes);
    }
    std::size_t WriteAt(std::uint64_t offset, ByteView bytes) override {
        bytes = bytes.first(std::min(bytes.size(), kAtOnce));
        files_.Count(bytes.size());
        return real_->WriteAt(offset, bytes);
    }
    void Flush() override { real_->Flush(); }
    void Close() override { real_->Close(); }

  private:
    // Small enough for a look at Ctrl-C now and then.
    static constexpr std::size_t kAtOnce = 4'000'000;

    CountedFiles& files_;
    std::unique_ptr<File> real_;
};

std::unique_ptr<File> CountedFiles::Open(std::string_view path, FileMode mode) {
    return std::make_unique<CountedFile>(*this, real_.Open(path, mode));
}

std::unique_ptr<File> CountedFiles::Create(std::string_view path, std::string_view like) {
    return std::make_unique<CountedFile>(*this, real_.Create(path, like));
}

void CountedFiles::Count(std::size_t bytes) {
    if (Interrupted()) {
        interrupted_ = true;
        throw CommandFailure("interrupted");
    }
    written_ += bytes;
    progress_.Show(0, written_ / 1'000'000);
}

}  // namespace tavolin::cli
