// Which interface, class and events stand before which class of the library.
#pragma once

#include <memory>

#include "com/platform.h"
#include "tavolin/engine/engine.h"
#include "tavolin/model/updater.h"

namespace tavolin::com {

class ObjectBase;

// A class as hosts know it.
struct ClassRow {
    const wchar_t* name;
    CLSID clsid;
    IID iid;
    const IID* events;        // null for a class without any
    ObjectBase* (*create)();  // null for what hosts get from other objects
};

template <class Core>
struct Face;

#define TAVOLIN_FACE(Name)           \
    template <>                      \
    struct Face<tavolin::Name> {     \
        using Interface = ::_##Name; \
        static const ClassRow row;   \
    };                               \
    ObjectBase* NewObject(std::shared_ptr<tavolin::Name> core);

TAVOLIN_FACE(CVLDBEngine)
TAVOLIN_FACE(CVLDBUser)
TAVOLIN_FACE(CVLDBUserSet)
TAVOLIN_FACE(CVLUserNote)
TAVOLIN_FACE(CVLUserNoteSet)
TAVOLIN_FACE(CVLTable)
TAVOLIN_FACE(CVLTableSet)
TAVOLIN_FACE(CVLRecord)
TAVOLIN_FACE(CVLRecordSet)
TAVOLIN_FACE(CVLAttachment)
TAVOLIN_FACE(CVLAttachmentSet)
TAVOLIN_FACE(CVLDBOwner)
TAVOLIN_FACE(CVLDBOwnerSet)
TAVOLIN_FACE(CVLOwnerDB)
TAVOLIN_FACE(CVLOwnerDBSet)
TAVOLIN_FACE(CVLErrorNum)
TAVOLIN_FACE(IUpdater)

#undef TAVOLIN_FACE

}  // namespace tavolin::com
