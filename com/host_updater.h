// A host's observer, as the library calls it.
#pragma once

#include <memory>

#include "com/failure.h"
#include "com/platform.h"
#include "com/ref.h"
#include "com/text.h"
#include "tavolin/model/updater.h"

namespace tavolin::com {

class HostUpdater : public tavolin::IUpdater {
  public:
    // Nothing before nothing.
    static std::shared_ptr<tavolin::IUpdater> Before(::_IUpdater* observer) {
        return observer ? std::make_shared<HostUpdater>(observer) : nullptr;
    }
    explicit HostUpdater(::_IUpdater* observer) : observer_(observer) {}

    // What the observer raises leaves as it raised it.
    void Update() override {
        ::SetErrorInfo(0, nullptr);
        Check(observer_->Update());
    }
    void AddAffectedRecords(std::string_view database, std::string_view table,
                            std::string_view recordKey) override {
        const BSTR texts[] = {NewText(database), NewText(table), NewText(recordKey)};
        const HRESULT result = observer_->AddAffectedRecords(texts[0], texts[1], texts[2]);
        for (const BSTR text : texts) ::SysFreeString(text);
        Check(result);
    }

  private:
    static void Check(HRESULT result) {
        if (FAILED(result)) throw HostError(result);
    }

    Ref<::_IUpdater> observer_;
};

}  // namespace tavolin::com
