#pragma once

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "QzAnno/model/QzMutableAnnoString.h"

namespace qz::fuzz {

/// Checks edits of a mutable annotated string against a plain model: a vector of characters, each with its own set of
/// keys. `Input` makes choices like `FuzzedDataProvider`, and its `require(holds, what)` does not return if `holds` is
/// false.
template <class Input>
class EditsCheck {
public:
    explicit EditsCheck(Input& input) : input_(input), pair_(newPair()) {}

    /// Returns false once the text is so long that further edits only take time.
    bool edit() {
        makeEdit(pair_);
        return pair_.string->length() < kLengthMax;
    }
    void compare() { compare(pair_); }

private:
    static constexpr size_t kKeys = 3;
    static constexpr uint32_t kLengthMax = 3000;

    static const std::array<Ref<QzAnnoKey>, kKeys>& keys() {
        static const std::array<Ref<QzAnnoKey>, kKeys> keys = {
            QzAnnoKey::keyWithName("a"_ns), QzAnnoKey::keyWithName("b"_ns), QzAnnoKey::keyWithName("c"_ns)};
        return keys;
    }

    struct Character {
        char16_t unit;
        std::array<bool, kKeys> holds{};
        friend bool operator==(const Character&, const Character&) = default;
    };
    using Model = std::vector<Character>;

    struct Pair {
        Ref<QzMutableAnnoString> string;
        Model model;
    };

    Pair newPair() {
        const auto length =
            input_.template ConsumeIntegralInRange<uint32_t>(0, 40) * input_.PickValueInArray({1u, 1u, 1u, 40u});
        std::u16string text;
        for (uint32_t i = 0; i < length; ++i) text += static_cast<char16_t>(u'a' + i % 26);
        Pair pair{QzMutableAnnoString::initWithString(NSString::stringWithCharacters(text)), {}};
        for (const char16_t unit : text) pair.model.push_back({unit, {}});
        // The state of an unknown key past the end of a text is up to the bit set, so make every text use all keys.
        for (const Ref<QzAnnoKey>& key : keys()) pair.string->removeAnno(key, {0, 0});
        for (size_t k = 0; k < kKeys; ++k) {
            const uint32_t start = input_.template ConsumeIntegralInRange<uint32_t>(0, length);
            const uint32_t end = input_.template ConsumeIntegralInRange<uint32_t>(start, length);
            pair.string->addAnno(keys()[k], {start, end - start});
            for (uint32_t i = start; i < end; ++i) pair.model[i].holds[k] = true;
        }
        return pair;
    }

    void compare(const Pair& pair) {
        input_.require(pair.string->length() == pair.model.size(), "the text has the model's length");
        const Ref<NSString> text = pair.string->string();
        uint32_t next = 0;
        for (const QzAnnoString::Run& run : pair.string->runs()) {
            input_.require(run.range.location == next && run.range.length > 0, "runs follow each other");
            next += run.range.length;
            const Character& first = pair.model[run.range.location];
            for (uint32_t i = run.range.location; i < next; ++i) {
                input_.require(text->characters()[i] == pair.model[i].unit, "characters are the model's");
                input_.require(pair.model[i].holds == first.holds, "a run has the same keys throughout");
            }
            for (size_t k = 0; k < kKeys; ++k)
                input_.require(run.keys->containsObject(*keys()[k]) == first.holds[k], "a run has the model's keys");
            input_.require(next == pair.model.size() || pair.model[next].holds != first.holds,
                           "a run is as long as it can be");
        }
        input_.require(next == pair.model.size(), "runs reach the end");
    }

    void compareQuery(const Pair& pair, uint32_t index, size_t k, Range within) {
        Range run{77, 77};
        const bool holds = pair.string->annotation(keys()[k], index, &run, within);
        Range runOfAll{77, 77};
        const Ref<NSSet> all = pair.string->annotationsAtIndex(index, &runOfAll, within);
        if (within.end() > pair.model.size() || !within.contains(index)) {
            input_.require(!holds && !all && run == Range{77, 77} && runOfAll == run, "a query outside is refused");
            return;
        }
        uint32_t start = index, end = index;
        while (start > within.location && pair.model[start - 1].holds[k] == pair.model[index].holds[k]) --start;
        while (end < within.end() && pair.model[end].holds[k] == pair.model[index].holds[k]) ++end;
        input_.require(holds == pair.model[index].holds[k] && run == Range{start, end - start},
                       "a query finds the model's run");
        for (start = end = index; start > within.location && pair.model[start - 1].holds == pair.model[index].holds;)
            --start;
        while (end < within.end() && pair.model[end].holds == pair.model[index].holds) ++end;
        input_.require(runOfAll == Range{start, end - start}, "a query of all keys finds where none changes");
        for (size_t each = 0; each < kKeys; ++each)
            input_.require(all->containsObject(*keys()[each]) == pair.model[index].holds[each],
                           "a query finds the keys");
    }

    /// Edits the model's text; does nothing if the edit must be refused.
    static void replace(Pair& pair, Range range, const Model& with, bool annotated) {
        Model& model = pair.model;
        const auto at = [&model](uint64_t position) { return model.begin() + static_cast<ptrdiff_t>(position); };
        if (annotated) {
            model.erase(at(range.location), at(range.end()));
            model.insert(at(range.location), with.begin(), with.end());
            return;
        }
        Model inserted = with;
        for (uint32_t i = 0; i < inserted.size(); ++i) {
            const uint32_t before = range.location + std::min(i, range.length);
            inserted[i].holds = i < range.length                    ? model[range.location + i].holds
                                : range.location + range.length > 0 ? model[before - 1].holds
                                                                    : Character{}.holds;
        }
        model.erase(at(range.location), at(range.end()));
        model.insert(at(range.location), inserted.begin(), inserted.end());
    }

    enum class Edit {
        replacePlain,
        replaceAnnotated,
        remove,
        insert,
        append,
        set,
        clear,
        toggle,
        frame,
        query,
        whole,
        last
    };

    void makeEdit(Pair& pair) {
        const uint32_t length = pair.string->length();
        const Edit kind =
            static_cast<Edit>(input_.template ConsumeIntegralInRange<int>(0, static_cast<int>(Edit::last) - 1));
        // Occasionally a position beyond the text.
        Range range{input_.template ConsumeIntegralInRange<uint32_t>(0, length + 1), 0};
        range.length = input_.template ConsumeIntegralInRange<uint32_t>(0, length + 2);
        if (input_.template ConsumeIntegralInRange<int>(0, 7) > 0 && range.end() > length)
            range = {std::min(range.location, length), length - std::min(range.location, length)};
        const bool fits = range.end() <= length;
        const size_t k = input_.template ConsumeIntegralInRange<size_t>(0, kKeys - 1);
        const auto each = [&](auto change) {
            for (uint64_t i = range.location; i < std::min<uint64_t>(range.end(), length); ++i)
                change(pair.model[i].holds);
        };
        switch (kind) {
            case Edit::replacePlain: {
                const Pair with = newPair();
                input_.require(pair.string->replaceCharactersInRange(range, with.string->string()) == fits,
                               "plain replacement");
                if (fits) replace(pair, range, with.model, false);
                break;
            }
            case Edit::replaceAnnotated: {
                const Pair with = input_.ConsumeBool() ? newPair() : pair;
                const Model model = with.model;
                input_.require(pair.string->replaceCharactersInRange(range, *with.string) == fits,
                               "annotated replacement");
                if (fits) replace(pair, range, model, true);
                break;
            }
            case Edit::remove:
                input_.require(pair.string->deleteCharactersInRange(range) == fits, "deletion");
                if (fits) replace(pair, range, {}, true);
                break;
            case Edit::insert: {
                const Pair with = newPair();
                input_.require(
                    pair.string->insertAnnoString(*with.string, range.location) == (range.location <= length),
                    "insertion");
                if (range.location <= length) replace(pair, {range.location, 0}, with.model, true);
                break;
            }
            case Edit::append: {
                const Pair with = newPair();
                pair.string->appendAnnoString(*with.string);
                replace(pair, {length, 0}, with.model, true);
                break;
            }
            case Edit::set:
                pair.string->addAnno(keys()[k], range);
                each([k](auto& holds) { holds[k] = true; });
                break;
            case Edit::clear:
                pair.string->removeAnno(keys()[k], range);
                each([k](auto& holds) { holds[k] = false; });
                break;
            case Edit::toggle:
                pair.string->toggleAnno(keys()[k], range);
                each([k](auto& holds) { holds[k] = !holds[k]; });
                break;
            case Edit::frame: {
                const bool everywhere =
                    length > 0 && std::ranges::all_of(pair.model, [k](const Character& c) { return c.holds[k]; });
                pair.string->toggleFrameAnno(keys()[k]);
                for (Character& character : pair.model) character.holds[k] = !everywhere;
                break;
            }
            case Edit::query:
                compareQuery(pair, input_.template ConsumeIntegralInRange<uint32_t>(0, length + 1), k, range);
                break;
            case Edit::whole: {
                // A substring lives on independently; the whole must not be affected.
                const Ref<QzAnnoString> piece = pair.string->annoSubstringFromRange(range);
                input_.require((piece != nullptr) == fits, "a substring");
                if (!piece) break;
                Pair cut{
                    piece->mutableCopy(),
                    {pair.model.begin() + range.location, pair.model.begin() + static_cast<ptrdiff_t>(range.end())}};
                compare(cut);
                cut.string->toggleAnno(keys()[k], {0, cut.string->length()});
                break;
            }
            case Edit::last:
                break;
        }
    }

    Input& input_;
    Pair pair_;
};

}  // namespace qz::fuzz
