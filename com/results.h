// What the library gives, as hosts take it. Included by object.h.
#pragma once

#include <new>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "com/dates.h"
#include "com/object.h"
#include "com/text.h"
#include "tavolin/model/types.h"

namespace tavolin::com {

inline void Give(bool value, VARIANT_BOOL* result) {
    *result = value ? VARIANT_TRUE : VARIANT_FALSE;
}
inline void Give(std::int32_t value, LONG* result) { *result = value; }
inline void Give(std::uint8_t value, BYTE* result) { *result = value; }
inline void Give(std::string_view value, BSTR* result) { *result = NewText(value); }
inline void Give(Date value, DATE* result) { *result = HostDate(value); }
inline void Give(TableEnum value, ::TableEnum* result) {
    *result = static_cast<::TableEnum>(value);
}
inline void Give(attachmentEnum value, ::attachmentEnum* result) {
    *result = static_cast<::attachmentEnum>(value);
}
inline void Give(const PrimaryKeyType& value, ::PrimaryKeyType* result) {
    *result = {value.Part0, value.Part1, value.Part2, value.Part3};
}
void Give(const LogType& value, ::LogType* result);
// Safe arrays with the lower bound 0.
void Give(const std::vector<std::uint8_t>& bytes, SAFEARRAY** result);
void Give(const std::vector<std::string>& texts, SAFEARRAY** result);

template <class Core>
void Give(const std::shared_ptr<Core>& core, typename Face<Core>::Interface** result) {
    *result = core ? Object<Core>::Before(core) : nullptr;
}

// A walk along a set, as an enumerator; in enumeration.h.
template <class Walk>
requires requires(Walk walk) { walk.Reset(); }
void Give(Walk walk, IUnknown** result);

// A table under the declared type of a record; in record_face.h.
void Give(const std::shared_ptr<CVLTable>& table, ::_CVLRecord** result);

template <class Core>
typename Object<Core>::Interface* Object<Core>::Before(const std::shared_ptr<Core>& core) {
    {
        std::lock_guard guard(Identities<Core>::Lock());
        const auto& living = Identities<Core>::Living();
        const auto entry = living.find(core.get());
        if (entry != living.end()) {
            auto* object = static_cast<Object*>(entry->second);
            if (object->TryHold()) return object;
        }
    }
    return static_cast<Object*>(NewObject(core));
}

// The one living object before one of the library's, made if there is none; an owned reference.
template <class Core>
typename Face<Core>::Interface* Before(const std::shared_ptr<Core>& core) {
    return Object<Core>::Before(core);
}

template <class Core>
template <class Result, class Body, class... Needed>
HRESULT Object<Core>::Return(Result* result, Body&& body, const Needed*... needed) {
    if (!result) return Refused(E_POINTER);
    *result = Result{};
    return Call([&] { Give(body(), result); }, needed...);
}

// The sink's connections to events that have the ids 1, 2 and so on.
template <class... Events>
std::vector<std::function<void()>> ConnectInOrder(const Ref<IDispatch>& sink, Events&... events) {
    std::vector<std::function<void()>> connections;
    connections.reserve(sizeof...(events));
    const auto add = [](EventArguments& arguments, const auto& value) {
        if constexpr (requires { arguments.Add(value); }) {
            arguments.Add(value);
        } else {
            Ref<IDispatch> object;
            if (value) object = Ref<IDispatch>::Owning(Before(value));
            arguments.Add(std::move(object));
        }
    };
    DISPID id = 0;
    const auto connect = [&](auto& event) {
        const auto connection = event.Connect([sink, add, id = ++id](const auto&... values) {
            EventArguments arguments;
            (add(arguments, values), ...);
            arguments.Send(sink.get(), id);
        });
        connections.push_back([&event, connection] { event.Disconnect(connection); });
    };
    try {
        (connect(events), ...);
    } catch (...) {
        for (const auto& end : connections) end();
        throw;
    }
    return connections;
}

}  // namespace tavolin::com
