#include "com/connections.h"

#include <algorithm>

#include "com/dates.h"
#include "com/faces.h"
#include "com/failure.h"
#include "com/list_enumerator.h"
#include "com/text.h"

namespace tavolin::com {

STDMETHODIMP EventSource::FindConnectionPoint(REFIID iid, IConnectionPoint** point) {
    if (!point) return Refused(E_POINTER);
    *point = nullptr;
    return Guarded(thread(), [&]() -> HRESULT {
        if (!row().events || iid != *row().events) return CONNECT_E_NOCONNECTION;
        *point = &point_;
        point_.AddRef();
        return S_OK;
    });
}

STDMETHODIMP EventSource::EnumConnectionPoints(IEnumConnectionPoints** points) {
    if (!points) return Refused(E_POINTER);
    *points = nullptr;
    return Guarded(thread(), [&]() -> HRESULT {
        std::vector<Ref<IConnectionPoint>> one;
        if (row().events) one.emplace_back(&point_);
        *points =
            new ListEnumerator<IEnumConnectionPoints, IConnectionPoint*, Ref<IConnectionPoint>>(
                std::move(one));
        return S_OK;
    });
}

void EventSource::DisconnectAll() {
    const auto ending = std::move(sinks_);
    sinks_.clear();
    for (const auto& [cookie, sink] : ending) {
        for (const auto& end : sink.connections) end();
    }
}

STDMETHODIMP EventSource::Point::QueryInterface(REFIID iid, void** result) {
    if (!result) return E_POINTER;
    *result = nullptr;
    if (iid != IID_IUnknown && iid != IID_IConnectionPoint) return E_NOINTERFACE;
    *result = static_cast<IConnectionPoint*>(this);
    AddRef();
    return S_OK;
}

STDMETHODIMP EventSource::Point::GetConnectionInterface(IID* iid) {
    if (!iid) return Refused(E_POINTER);
    *iid = IID{};
    return Guarded(source_.thread(), [&]() -> HRESULT {
        *iid = *source_.row().events;
        return S_OK;
    });
}

STDMETHODIMP EventSource::Point::GetConnectionPointContainer(
    IConnectionPointContainer** container) {
    if (!container) return Refused(E_POINTER);
    *container = nullptr;
    return Guarded(source_.thread(), [&]() -> HRESULT {
        *container = &source_;
        source_.AddRef();
        return S_OK;
    });
}

STDMETHODIMP EventSource::Point::Advise(IUnknown* sink, DWORD* cookie) {
    if (!sink || !cookie) return Refused(E_POINTER);
    *cookie = 0;
    return Guarded(source_.thread(), [&]() -> HRESULT {
        auto events = Ref<IDispatch>::Of(sink, *source_.row().events);
        if (!events) events = Ref<IDispatch>::Of(sink);
        if (!events) return CONNECT_E_CANNOTCONNECT;
        Sink& entry = source_.sinks_[source_.last_cookie_ + 1];
        try {
            entry = {events, source_.Connect(events)};
        } catch (...) {
            source_.sinks_.erase(source_.last_cookie_ + 1);
            throw;
        }
        *cookie = ++source_.last_cookie_;
        return S_OK;
    });
}

STDMETHODIMP EventSource::Point::Unadvise(DWORD cookie) {
    return Guarded(source_.thread(), [&]() -> HRESULT {
        const auto entry = source_.sinks_.find(cookie);
        if (entry == source_.sinks_.end()) return CONNECT_E_NOCONNECTION;
        const Sink ending = std::move(entry->second);
        source_.sinks_.erase(entry);
        for (const auto& end : ending.connections) end();
        return S_OK;
    });
}

namespace {

// A connection in an enumeration: it keeps its sink.
class ConnectionEntry {
  public:
    ConnectionEntry(DWORD cookie, Ref<IDispatch> sink) : cookie_(cookie), sink_(std::move(sink)) {}
    CONNECTDATA Detach() { return {sink_.Detach(), cookie_}; }

  private:
    DWORD cookie_;
    Ref<IDispatch> sink_;
};

}  // namespace

STDMETHODIMP EventSource::Point::EnumConnections(IEnumConnections** connections) {
    if (!connections) return Refused(E_POINTER);
    *connections = nullptr;
    return Guarded(source_.thread(), [&]() -> HRESULT {
        std::vector<ConnectionEntry> entries;
        for (const auto& [cookie, sink] : source_.sinks_) entries.emplace_back(cookie, sink.sink);
        *connections =
            new ListEnumerator<IEnumConnections, CONNECTDATA, ConnectionEntry>(std::move(entries));
        return S_OK;
    });
}

EventArguments::~EventArguments() {
    for (VARIANT& value : values_) ::VariantClear(&value);
}

void EventArguments::Add(const std::string& text) {
    VARIANT value{};
    value.bstrVal = NewText(text);
    value.vt = VT_BSTR;
    values_.push_back(value);
}

void EventArguments::Add(Date date) {
    VARIANT value{};
    value.vt = VT_DATE;
    value.date = HostDate(date);
    values_.push_back(value);
}

void EventArguments::Add(Ref<IDispatch> object) {
    VARIANT value{};
    value.vt = VT_DISPATCH;
    value.pdispVal = object.Detach();
    values_.push_back(value);
}

void EventArguments::Send(IDispatch* sink, DISPID event) {
    std::reverse(values_.begin(), values_.end());  // the platform's order
    DISPPARAMS parameters{values_.data(), nullptr, static_cast<UINT>(values_.size()), 0};
    sink->Invoke(event, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &parameters, nullptr,
                 nullptr, nullptr);
}

}  // namespace tavolin::com
