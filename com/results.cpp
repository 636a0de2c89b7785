#include "com/results.h"

#include <algorithm>

namespace tavolin::com {
namespace {

// A new array of one dimension, given to the caller once it has been filled.
class NewArray {
  public:
    NewArray(VARTYPE type, std::size_t count)
        : array_(::SafeArrayCreateVector(type, 0, static_cast<ULONG>(count))) {
        if (!array_) throw std::bad_alloc();
    }
    ~NewArray() {
        if (array_) ::SafeArrayDestroy(array_);
    }
    NewArray(const NewArray&) = delete;
    NewArray& operator=(const NewArray&) = delete;

    template <class Element>
    Element* elements() const {
        return static_cast<Element*>(array_->pvData);
    }
    SAFEARRAY* Detach() { return std::exchange(array_, nullptr); }

  private:
    SAFEARRAY* array_;
};

}  // namespace

void Give(const std::vector<std::uint8_t>& bytes, SAFEARRAY** result) {
    NewArray array(VT_UI1, bytes.size());
    std::copy(bytes.begin(), bytes.end(), array.elements<BYTE>());
    *result = array.Detach();
}

void Give(const std::vector<std::string>& texts, SAFEARRAY** result) {
    NewArray array(VT_BSTR, texts.size());
    std::transform(texts.begin(), texts.end(), array.elements<BSTR>(), NewText);
    *result = array.Detach();
}

void Give(const LogType& value, ::LogType* result) {
    const auto flag = [](bool is) { return is ? VARIANT_TRUE : VARIANT_FALSE; };
    *result = {flag(value.logErrors),        flag(value.logDBLogOn),
               flag(value.logOwnerChange),   flag(value.logUserCreation),
               flag(value.logTableCreation), flag(value.logLkTableCreation),
               flag(value.logTableDeletion), flag(value.logLkTableDeletion),
               flag(value.logTablesLinking), flag(value.logTableUnlinking),
               flag(value.logRecordAdd),     flag(value.logRecordUpDate),
               flag(value.logRecordDelete),  flag(value.logTransactions)};
}

}  // namespace tavolin::com
