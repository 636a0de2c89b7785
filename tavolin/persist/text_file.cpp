#include "tavolin/persist/text_file.h"

#include <string>

#include "tavolin/base/code_page.h"
#include "tavolin/base/text.h"

namespace tavolin {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
// What comes together before it is written: large enough that the number of requests costs nothing.
constexpr std::size_t kWriteStep = std::size_t{1} << 20;

ByteView Bytes(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

// What the file begins with, as far as that is needed to tell how it is written.
std::string FileHead(FileSystem& files, std::string_view path) {
    const auto file = files.Open(path, FileMode::kRead);
    std::string head(kByteOrderMark.size(), '\0');
    head.resize(file->ReadAt(0, {reinterpret_cast<std::uint8_t*>(head.data()), head.size()}));
    return head;
}

void RewriteAsUtf8(FileSystem& files, std::string_view path, std::string_view added) {
    const auto old_bytes = files.ReadFile(path);
    const std::string old_text =
        DecodeAnsi({reinterpret_cast<const char*>(old_bytes.data()), old_bytes.size()});
    const ByteView chunks[] = {Bytes(kByteOrderMark), Bytes(old_text), Bytes(added)};
    files.Replace(path, chunks);
}

}  // namespace

TextEncoding EncodingFor(std::string_view text) {
    return FitsAnsi(text) ? TextEncoding::kAnsi : TextEncoding::kUtf8;
}

TextFileWriter::TextFileWriter(std::string_view path, TextEncoding encoding)
    : encoding_(encoding), file_(FileSystem::Current().Open(path, FileMode::kWrite)) {
    if (encoding_ == TextEncoding::kUtf8) text = kByteOrderMark;
}

void TextFileWriter::Pause() {
    if (text.size() >= kWriteStep) Write();
}

void TextFileWriter::Close() {
    Write();
    file_->Close();
}

void TextFileWriter::Write() {
    if (encoding_ == TextEncoding::kUtf8 || IsAscii(text)) {
        WriteAll(*file_, Bytes(text));
    } else {
        WriteAll(*file_, Bytes(EncodeAnsiWithReferences(text)));
    }
    text.clear();
}

void AppendTextFile(std::string_view path, std::string_view text) {
    FileSystem& files = FileSystem::Current();
    const std::string head = files.Exists(path) ? FileHead(files, path) : std::string();
    const auto ansi = EncodeAnsi(text);
    if (head == kByteOrderMark) {
        files.Append(path, Bytes(text));
    } else if (head.empty()) {
        files.Append(path, Bytes(EncodeTextFile(text)));
    } else if (ansi) {
        files.Append(path, Bytes(*ansi));
    } else {
        RewriteAsUtf8(files, path, text);
    }
}

}  // namespace tavolin
