// How a collection of objects is stored: its count under one key, then its elements as a numbered
// series.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tavolin/model/object_collection.h"
#include "tavolin/persist/property_bag.h"

namespace tavolin {

template <class T>
void WriteCollection(PropertyBagWriter& bag, const ObjectCollection<T>& elements,
                     std::string_view count_key, std::string_view prefix) {
    bag.Write(count_key, elements.Count());
    auto element = elements.begin();
    bag.WriteSeries(prefix, static_cast<std::size_t>(elements.Count()), [&](std::size_t) {
        (*element)->WriteProperties(bag);
        ++element;
    });
}

// `make()` gives a new element, `key_of(element)` the key that it is filed under. An element whose
// key is taken keeps its place without a key, so that whatever was saved can be loaded.
template <class T, class Make, class KeyOf>
std::shared_ptr<ObjectCollection<T>> ReadCollection(PropertyBagReader& bag,
                                                    std::string_view count_key,
                                                    std::string_view prefix, Make make,
                                                    KeyOf key_of) {
    auto elements = std::make_shared<ObjectCollection<T>>();
    const std::int32_t count = bag.ReadInt(count_key);
    const std::size_t found = bag.ReadSeries(prefix, [&](std::size_t) {
        auto element = make();
        element->ReadProperties(bag);
        const std::string key(key_of(*element));
        if (elements->Contains(key)) {
            elements->AddKeyless(std::move(element));
        } else {
            elements->Add(key, std::move(element));
        }
    });
    if (std::cmp_not_equal(found, count)) {
        throw DamagedState(std::string(prefix) + ": " + std::to_string(found) + " elements where " +
                           std::string(count_key) + " is " + std::to_string(count));
    }
    return elements;
}

// An object's state as a byte array of its own.
template <class Write>
std::vector<std::uint8_t> MakeState(Write write) {
    PropertyBagWriter bag;
    write(bag);
    return std::move(bag).Finish();
}

}  // namespace tavolin
