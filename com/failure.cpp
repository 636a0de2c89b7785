#include "com/failure.h"

#include <exception>

#include "com/ref.h"
#include "com/text.h"
#include "tavolin/errors/trap.h"

namespace tavolin::com {
namespace {

constexpr std::uint32_t kRunTimeErrors = 0x800A0000u;
constexpr std::string_view kLibrary = "Tavolin";

std::string Taken(BSTR text) {
    const std::string utf8 = Utf8(text);
    ::SysFreeString(text);
    return utf8;
}

void SetInformation(const Error& error, REFIID iid) {
    Ref<ICreateErrorInfo> writer;
    if (FAILED(::CreateErrorInfo(writer.slot()))) return;
    const BSTR source = NewText(error.source().empty() ? kLibrary : error.source());
    const BSTR description = NewText(error.description());
    writer->SetGUID(iid);
    writer->SetSource(source);
    writer->SetDescription(description);
    ::SysFreeString(source);
    ::SysFreeString(description);
    const auto information = Ref<IErrorInfo>::Of(writer.get());
    ::SetErrorInfo(0, information.get());
}

}  // namespace

HRESULT ResultOf(const Error& error) {
    if (error.number() < 0) return error.number();
    return static_cast<HRESULT>(kRunTimeErrors +
                                (static_cast<std::uint32_t>(error.number()) & 0xFFFFu));
}

HRESULT Report(const Error& error, REFIID iid) noexcept {
    try {
        SetInformation(error, iid);
        return ResultOf(error);
    } catch (...) {
        return Refused(E_OUTOFMEMORY);
    }
}

HRESULT ReportCurrent(REFIID iid) noexcept {
    try {
        return Report(CurrentError(), iid);
    } catch (...) {
        return Refused(E_OUTOFMEMORY);
    }
}

Error HostError(HRESULT result) {
    std::string source;
    std::string description;
    Ref<IErrorInfo> information;
    if (::GetErrorInfo(0, information.slot()) == S_OK && information) {
        BSTR text = nullptr;
        if (SUCCEEDED(information->GetSource(&text))) source = Taken(text);
        text = nullptr;
        if (SUCCEEDED(information->GetDescription(&text))) description = Taken(text);
    }
    if (description.empty()) description = "The observer failed";
    return Error(result, source, Message(std::string_view(description)));
}

void RaiseMismatch() { throw Error(kTypeMismatch); }

}  // namespace tavolin::com
