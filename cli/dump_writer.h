// The whole open database as readable text; docs/dump-format.md tells what it looks like.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "tavolin/engine/engine.h"

namespace tavolin::cli {

inline constexpr std::string_view kDumpHeader = "tavolin-dump 1";

// The key that the fields of a record make.
std::string ComposedKey(const PrimaryKeyType& key, const std::vector<std::string>& fields);

// Calls body(attachment) for each attachment of a record, whose set is not made if there is none.
template <class Body>
void ForEachAttachment(CVLRecord& record, Body&& body) {
    if (!record.HasAttachments()) return;
    for (const auto& attachment : record.CVLAttachmentSet()->NewEnum()) body(*attachment);
}

class DumpWriter {
  public:
    // Appends to `text`, and calls `flow` every few lines, which may empty it.
    DumpWriter(CVLDBEngine& engine, std::string& text, std::function<void()> flow)
        : engine_(engine), text_(text), flow_(std::move(flow)) {}

    void Write();

  private:
    void WriteHead();
    void WriteUser(const CVLDBUser& user);
    void WriteTable(const CVLTable& table);
    void WriteMention(std::string_view kind, int number, const std::string& target);
    void WriteRecord(const CVLTable& table, const std::shared_ptr<CVLRecord>& record);
    void WriteAttachments(CVLRecord& record);
    void AddText(std::string_view text);
    void AddNumber(std::int64_t number);

    CVLDBEngine& engine_;
    std::string& text_;
    std::function<void()> flow_;
    std::vector<std::string> fields_;  // of the record that is being written
};

}  // namespace tavolin::cli
