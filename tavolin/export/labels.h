// The fields of a record set that an export shows: those that have a label.
#pragma once

#include <string_view>
#include <utility>
#include <vector>

#include "tavolin/model/field_texts.h"
#include "tavolin/model/table.h"

namespace tavolin {

struct LabelledField {
    int number;
    std::string_view label;
};

inline std::vector<LabelledField> Labelled(const FieldTexts& labels) {
    std::vector<LabelledField> fields;
    for (int i = 0; i < kFieldCount; ++i) {
        if (!labels[i].empty()) fields.push_back({i, labels[i]});
    }
    return fields;
}

// Views of the table's labels.
inline FieldTexts LabelsOf(const CVLTable& table) {
    std::array<std::string_view, kFieldCount> labels;
    for (int i = 0; i < kFieldCount; ++i) {
        labels[static_cast<std::size_t>(i)] = table.FieldLabel(i);
    }
    return labels;
}

}  // namespace tavolin
