#include "tavolin/export/mdb/sort_key.h"

#include <algorithm>
#include <iterator>

#include "tavolin/export/mdb/sort_rules.h"

namespace tavolin::mdb {
namespace {

constexpr std::uint8_t kEndOfWeights = 0x01;
constexpr std::uint8_t kEndOfKey = 0x00;
constexpr std::uint8_t kNoExtra = 0x02;  // extras up to this one are not written at the end

const SortRule* RuleFor(char16_t unit) {
    const auto* rule =
        std::lower_bound(std::begin(kSortRules), std::end(kSortRules), unit,
                         [](const SortRule& each, char16_t wanted) { return each.last < wanted; });
    return rule != std::end(kSortRules) && rule->first <= unit ? rule : nullptr;
}

// A key is the weights of the characters; then what tells accents apart, kana of different kinds
// and sizes, and last the characters that stand aside.
class KeyBuilder {
  public:
    void Add(char16_t unit, const SortRule& rule) {
        if (rule.kind == kMark) return AddMark(rule.extra);
        if (rule.kind == kAside) return AddAside(rule.extra);
        const auto weight = static_cast<std::uint16_t>(rule.weight + (unit - rule.first));
        if (weight < 0x100) {
            weights_.push_back(static_cast<std::uint8_t>(weight));
        } else {
            AppendBig(weights_, weight);
        }
        if (rule.extra != 0) {
            PadExtras();
            extras_.push_back(rule.extra);
            ++covered_;
        }
        if (rule.kind == kKana) kana_.push_back(3);
        if (rule.kind == kSmallKana) kana_.push_back(2);
        ++position_;
    }

    Bytes Finish() {
        while (!extras_.empty() && extras_.back() <= kNoExtra) extras_.pop_back();
        Bytes key = std::move(weights_);
        key.push_back(kEndOfWeights);
        Append(key, extras_);
        if (!kana_.empty() || !aside_.empty()) Append(key, Bytes{1, 1});
        if (!kana_.empty()) AppendKana(key);
        if (!aside_.empty()) {
            if (!kana_.empty()) key.push_back(0xFF);
            key.push_back(1);
            Append(key, aside_);
        }
        key.push_back(kEndOfKey);
        return key;
    }

  private:
    void PadExtras() {
        extras_.resize(extras_.size() + (position_ - covered_), kNoExtra);
        covered_ = position_;
    }

    // Adds to the extra of the character before. The first character of all has none before it;
    // the mark's byte then counts for no position.
    void AddMark(std::uint8_t extra) {
        PadExtras();
        if (extras_.empty()) {
            extras_.push_back(extra);
            leading_mark_ = true;
        } else {
            extras_.back() = static_cast<std::uint8_t>(extras_.back() + extra);
        }
    }

    void AddAside(std::uint8_t code) {
        const std::size_t place =
            extras_.empty() ? position_
                            : extras_.size() + (position_ - covered_) - (leading_mark_ ? 1 : 0);
        AppendBig(aside_, static_cast<std::uint16_t>(0x8000 | (7 + 4 * place)));
        Append(aside_, Bytes{0x06, code});
    }

    void AppendKana(Bytes& key) const {
        std::size_t count = kana_.size();
        while (count > 0 && kana_[count - 1] == 3) --count;
        for (std::size_t i = 0; i < count; i += 3) {
            unsigned packed = 0x80;
            for (std::size_t j = i; j < std::min(i + 3, count); ++j) {
                packed |= static_cast<unsigned>(kana_[j]) << (4 - 2 * (j - i));
            }
            key.push_back(static_cast<std::uint8_t>(packed));
        }
        Append(key, Bytes{0xFF, 0x02, 0x80, 0xFF, 0x80});
    }

    Bytes weights_;
    Bytes extras_;
    Bytes kana_;
    Bytes aside_;
    std::size_t position_ = 0;  // characters with a weight so far
    std::size_t covered_ = 0;   // those that extras_ tells of
    bool leading_mark_ = false;
};

}  // namespace

std::optional<Bytes> SortKey(std::u16string_view name) {
    while (!name.empty() && name.back() == u' ') name.remove_suffix(1);
    KeyBuilder key;
    for (const char16_t unit : name) {
        const SortRule* rule = RuleFor(unit);
        if (rule == nullptr) return {};
        key.Add(unit, *rule);
    }
    return key.Finish();
}

}  // namespace tavolin::mdb
