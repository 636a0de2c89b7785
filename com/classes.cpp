#include "com/classes.h"

#include "com/object.h"

namespace tavolin::com {
namespace {

template <class Core>
ObjectBase* Create() {
    return NewObject(std::make_shared<Core>());
}

}  // namespace

#define TAVOLIN_CLASS(Name, events, create)                                                   \
    const ClassRow Face<tavolin::Name>::row{L"" #Name, __uuidof(::Name), __uuidof(::_##Name), \
                                            events, create};
#define TAVOLIN_EVENTS_OF(Name) &__uuidof(::__##Name)

TAVOLIN_CLASS(CVLDBEngine, TAVOLIN_EVENTS_OF(CVLDBEngine), &Create<tavolin::CVLDBEngine>)
TAVOLIN_CLASS(CVLDBUser, TAVOLIN_EVENTS_OF(CVLDBUser), nullptr)
TAVOLIN_CLASS(CVLDBUserSet, TAVOLIN_EVENTS_OF(CVLDBUserSet), nullptr)
TAVOLIN_CLASS(CVLUserNote, nullptr, nullptr)
TAVOLIN_CLASS(CVLUserNoteSet, TAVOLIN_EVENTS_OF(CVLUserNoteSet), &Create<tavolin::CVLUserNoteSet>)
TAVOLIN_CLASS(CVLTable, TAVOLIN_EVENTS_OF(CVLTable), nullptr)
TAVOLIN_CLASS(CVLTableSet, TAVOLIN_EVENTS_OF(CVLTableSet), nullptr)
TAVOLIN_CLASS(CVLRecord, TAVOLIN_EVENTS_OF(CVLRecord), &Create<tavolin::CVLRecord>)
TAVOLIN_CLASS(CVLRecordSet, TAVOLIN_EVENTS_OF(CVLRecordSet), &Create<tavolin::CVLRecordSet>)
TAVOLIN_CLASS(CVLAttachment, TAVOLIN_EVENTS_OF(CVLAttachment), nullptr)
TAVOLIN_CLASS(CVLAttachmentSet, TAVOLIN_EVENTS_OF(CVLAttachmentSet),
              &Create<tavolin::CVLAttachmentSet>)
TAVOLIN_CLASS(CVLDBOwner, TAVOLIN_EVENTS_OF(CVLDBOwner), nullptr)
TAVOLIN_CLASS(CVLDBOwnerSet, TAVOLIN_EVENTS_OF(CVLDBOwnerSet), nullptr)
TAVOLIN_CLASS(CVLOwnerDB, TAVOLIN_EVENTS_OF(CVLOwnerDB), nullptr)
TAVOLIN_CLASS(CVLOwnerDBSet, TAVOLIN_EVENTS_OF(CVLOwnerDBSet), nullptr)
TAVOLIN_CLASS(CVLErrorNum, nullptr, &Create<tavolin::CVLErrorNum>)
TAVOLIN_CLASS(IUpdater, nullptr, &Create<tavolin::IUpdater>)

std::span<const ClassRow* const> Classes() {
    static const ClassRow* const rows[] = {
        &Face<CVLDBEngine>::row,   &Face<CVLDBUser>::row,        &Face<CVLDBUserSet>::row,
        &Face<CVLUserNote>::row,   &Face<CVLUserNoteSet>::row,   &Face<CVLTable>::row,
        &Face<CVLTableSet>::row,   &Face<CVLRecord>::row,        &Face<CVLRecordSet>::row,
        &Face<CVLAttachment>::row, &Face<CVLAttachmentSet>::row, &Face<CVLDBOwner>::row,
        &Face<CVLDBOwnerSet>::row, &Face<CVLOwnerDB>::row,       &Face<CVLOwnerDBSet>::row,
        &Face<CVLErrorNum>::row,   &Face<IUpdater>::row,
    };
    return rows;
}

const ClassRow* CreatableClass(REFCLSID clsid) {
    for (const ClassRow* row : Classes()) {
        if (row->clsid == clsid) return row->create ? row : nullptr;
    }
    return nullptr;
}

}  // namespace tavolin::com
