#include "com/properties.h"
#include "tavolin/model/user_note_set.h"

namespace tavolin::com {
namespace {

class NoteObject : public Object<CVLUserNote> {
  public:
    using Object::Object;

    STDMETHODIMP get_dateKey(BSTR* result) override {
        return Return(result, [&] { return core().dateKey; });
    }
    STDMETHODIMP put_dateKey(BSTR value) override {
        return Call([&] { core().dateKey = Utf8(value); });
    }
    STDMETHODIMP get_nKey(LONG* result) override {
        return Return(result, [&] { return core().nKey; });
    }
    STDMETHODIMP put_nKey(LONG value) override {
        return Call([&] { core().nKey = value; });
    }
    TAVOLIN_TEXT(Note)
};

}  // namespace

ObjectBase* NewObject(std::shared_ptr<CVLUserNote> core) { return new NoteObject(std::move(core)); }

}  // namespace tavolin::com
