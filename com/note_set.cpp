#include "com/properties.h"
#include "com/set_object.h"
#include "tavolin/model/user_note_set.h"

namespace tavolin::com {
namespace {

class NoteSetObject : public SetObject<CVLUserNoteSet> {
  public:
    using SetObject::SetObject;

    STDMETHODIMP Add(DATE dateKey, LONG nKey, BSTR Note, ::_CVLUserNote** result) override {
        return Return(result, [&] { return core().Add(DateOf(dateKey), nKey, Utf8(Note)); });
    }
    STDMETHODIMP Update(VARIANT varKey, BSTR Note, ::_CVLUserNote** result) override {
        return Return(result, [&] { return core().Update(Argument(varKey).Key(), Utf8(Note)); });
    }
    TAVOLIN_ITEM(CVLUserNote)
    TAVOLIN_OBJECT_STATE
    TAVOLIN_NAVIGATION(Note, ::_CVLUserNote, ::_CVLUserNote)

    TAVOLIN_EVENTS(core().OnNoteAdd, core().OnNoteRemove)
};

}  // namespace

ObjectBase* NewObject(std::shared_ptr<CVLUserNoteSet> core) {
    return new NoteSetObject(std::move(core));
}

}  // namespace tavolin::com
