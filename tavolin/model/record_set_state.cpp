// The stored form of a record set: the number of records, their images one behind the other, and
// beside them what few records have.
#include <algorithm>
#include <iterator>
#include <utility>

#include "tavolin/errors/trap.h"
#include "tavolin/model/attachment_set.h"
#include "tavolin/model/record_set.h"
#include "tavolin/model/session.h"
#include "tavolin/model/stored_collection.h"
#include "tavolin/persist/property_bag.h"

namespace tavolin {
namespace {

// The records that have a key of their own or attachments, and their positions.
struct Special {
    std::int32_t position;
    RecordHandle record;
};

std::vector<Special> SpecialRecords(const RecordCollection& records) {
    std::vector<Special> special;
    const RecordArena& arena = records.arena();
    if (!arena.AnyExtras()) return special;
    std::int32_t position = 0;
    records.ForEach([&](RecordHandle record) {
        ++position;
        if (arena.HasOwnKey(record) || arena.HasAttachments(record)) {
            special.push_back({position, record});
        }
    });
    return special;
}

void WriteSpecial(PropertyBagWriter& bag, RecordArena& arena, const Special& special) {
    bag.Write("i", special.position);
    if (arena.HasOwnKey(special.record)) bag.Write("k", arena.Key(special.record));
    if (!arena.HasAttachments(special.record)) return;
    const auto attachments = arena.Attachments(special.record, false);
    bag.WriteObject("att", [&] { attachments->WriteProperties(bag); });
}

// For the process itself: where each record lies among the images is kept with them, if all can be
// blocks as they are, and each already has the leaf that it will be in.
void WriteBlocks(PropertyBagWriter& bag, const RecordCollection& records) {
    std::vector<RecordHandle> handles;
    handles.reserve(static_cast<std::size_t>(records.Count()));
    bool blocks = true;
    bag.BeginBlocks("Record");
    const std::size_t start = bag.size();
    records.ForEach([&](RecordHandle record) {
        const auto index = static_cast<std::uint32_t>(handles.size());
        handles.push_back(static_cast<RecordHandle>((bag.size() - start) / RecordArena::kUnit));
        const auto leaf = RecordCollection::LeafOfAdopted(index);
        if (!records.arena().WriteImage(record, bag, leaf)) blocks = false;
    });
    bag.EndBlocks();
    if (!blocks) return;
    bag.WriteBlocks("RecordHandle", {reinterpret_cast<const std::uint8_t*>(handles.data()),
                                     handles.size() * sizeof(RecordHandle)});
}

void ReadSpecial(PropertyBagReader& bag, RecordArena& arena,
                 std::span<const RecordHandle> records) {
    const std::int32_t position = bag.ReadInt("i");
    if (position < 1 || std::cmp_greater(position, records.size())) {
        bag.Refuse("i", "no such record");
    }
    const RecordHandle record = records[static_cast<std::size_t>(position - 1)];
    if (bag.Has("k")) arena.RestoreKey(record, bag.ReadText("k"));
    bag.ReadObject("att", [&] { arena.Attachments(record, true)->ReadProperties(bag); });
}

}  // namespace

std::vector<std::uint8_t> CVLRecordSet::ObjectState() const {
    return Trap("CVLRecordSet:ObjectState Property Get",
                [&] { return MakeState([&](PropertyBagWriter& bag) { WriteProperties(bag); }); });
}

void CVLRecordSet::ObjectState(const std::vector<std::uint8_t>& state) {
    Trap("CVLRecordSet:ObjectState Property Let", [&] {
        PropertyBagReader bag(state);
        ReadProperties(bag);
    });
}

void CVLRecordSet::WriteProperties(PropertyBagWriter& bag) const {
    bag.Write("RecordsCount", Count());
    if (bag.seal() == BagSeal::kNone) {
        WriteBlocks(bag, *records_);
    } else {
        bag.BeginBlocks("Record");
        records_->ForEach([&](RecordHandle record) { records_->arena().WriteImage(record, bag); });
        bag.EndBlocks();
    }
    const auto special = SpecialRecords(*records_);
    bag.WriteSeries("RecordExtra", special.size(),
                    [&](std::size_t i) { WriteSpecial(bag, records_->arena(), special[i - 1]); });
}

void CVLRecordSet::ReadProperties(PropertyBagReader& bag) {
    const std::int32_t count = bag.ReadInt("RecordsCount");
    auto images = bag.TakeBlocks("Record");
    auto records = std::make_shared<RecordCollection>(records_->arena().session());
    RecordArena& arena = records->arena();
    // Only what never left the process is believed without a look.
    const bool blocks = bag.seal() == BagSeal::kNone && bag.Has("RecordHandle");
    std::vector<RecordHandle> found;
    std::span<const RecordHandle> handles;
    if (blocks) {
        const auto kept = bag.ReadBlocks("RecordHandle");
        handles = {reinterpret_cast<const RecordHandle*>(kept.data()),
                   kept.size() / sizeof(RecordHandle)};
        arena.AdoptBlocks(images.bytes, std::move(images.owner));
    } else {
        handles = found = arena.Adopt(images.bytes, std::move(images.owner));
    }
    if (std::cmp_not_equal(handles.size(), count)) {
        bag.Refuse("RecordsCount", "another number of records is there");
    }
    bag.ReadSeries("RecordExtra", [&](std::size_t) { ReadSpecial(bag, arena, handles); });
    if (blocks) {
        records->AdoptPlaced(handles);
    } else {
        // What this process keeps for itself is as it made it.
        if (bag.seal() == BagSeal::kChecksum) arena.CheckAdopted(handles);
        records->Adopt(handles);
    }
    if (arena.AnyOwnKeys()) {
        std::vector<RecordHandle> own;
        std::copy_if(handles.begin(), handles.end(), std::back_inserter(own),
                     [&](RecordHandle record) { return arena.HasOwnKey(record); });
        records->FileOwnKeys(own);
    }
    // Whoever holds a record of the old ones can read it, and change nothing in the set by it.
    Retire();
    records_ = std::move(records);
}

}  // namespace tavolin
