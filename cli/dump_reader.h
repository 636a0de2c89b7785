// A dump's lines made into a database. It knows what may follow what; what the lines hold it gives
// to a RestoredDatabase.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "cli/dump_text.h"
#include "cli/line_reader.h"
#include "cli/restored_database.h"

namespace tavolin::cli {

class DumpReader {
  public:
    // `look` is called every few thousand lines.
    DumpReader(ByteSource source, RestoredDatabase& into,
               std::function<void(const LineReader&)> look)
        : lines_(std::move(source)), into_(into), look_(std::move(look)) {}

    // Raises DumpError for the first line that is not as docs/dump-format.md tells, and what the
    // engine raises.
    void Read();

  private:
    enum class Part { kHead, kUser, kTable, kRecord, kEnd };

    bool NextLine();
    void ReadLine();
    void CheckVersion();
    void ReadHeadLine(std::string_view word, DumpLine& line);
    void ReadUserLine(std::string_view word, DumpLine& line);
    void ReadTableLine(std::string_view word, DumpLine& line);
    void ReadRecordLine(std::string_view word, DumpLine& line);
    void BeginUser(DumpLine& line);
    void BeginTable(DumpLine& line);
    void BeginRecord(DumpLine& line);
    void ReadLog(DumpLine& line);
    void ReadKeyFields(DumpLine& line);
    void ReadField(DumpLine& line);
    void ReadLink(DumpLine& line);
    void ReadLinkedBy(DumpLine& line);
    void ReadAttachment(DumpLine& line);
    void FinishHead(DumpLine& line);
    void FinishRecord();

    LineReader lines_;
    RestoredDatabase& into_;
    std::function<void(const LineReader&)> look_;
    Part part_ = Part::kHead;
    RestoredHead head_;
    RestoredRecord record_;
};

}  // namespace tavolin::cli
