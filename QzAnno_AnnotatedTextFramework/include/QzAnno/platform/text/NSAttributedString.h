#pragma once

#include <vector>

#include "QzAnno/platform/foundation/Callback.h"
#include "QzAnno/platform/foundation/NSDictionary.h"
#include "QzAnno/platform/foundation/NSString.h"

namespace qz {

// The names of the attributes that the text system reads. The values are part of stored palettes.
inline const Ref<NSString> NSFontAttributeName = "NSFont"_ns;                      ///< `NSFont`
inline const Ref<NSString> NSForegroundColorAttributeName = "NSColor"_ns;          ///< `NSColor`; black by default
inline const Ref<NSString> NSParagraphStyleAttributeName = "NSParagraphStyle"_ns;  ///< `NSParagraphStyle`
inline const Ref<NSString> NSKernAttributeName = "NSKern"_ns;  ///< number: points added to each advance
inline const Ref<NSString> NSObliquenessAttributeName =
    "NSObliqueness"_ns;  ///< number: shear to the right, per unit of height
inline const Ref<NSString> NSBaselineOffsetAttributeName = "NSBaselineOffset"_ns;  ///< number: points upward
/// `NSFont`: the requested font where a substitute supplies missing characters. Set by the text storage.
inline const Ref<NSString> NSOriginalFontAttributeName = "NSOriginalFont"_ns;
/// String: the language of the text as a BCP 47 tag. It influences which fonts supply missing characters, and how a
/// font shapes its letters.
inline const Ref<NSString> NSLanguageAttributeName = "NSLanguage"_ns;

/// A text with a dictionary of attributes for every character, stored as runs. Ranges and indices count UTF-16 units.
///
/// A query outside the text, or with an index outside its range, returns null and does not write its out-range.
class NSAttributedString : public NSObject {
public:
    /// An empty text.
    static Ref<NSAttributedString> init();
    /// A null string or dictionary counts as empty.
    static Ref<NSAttributedString> initWithString(const Ref<NSString>& string, Ref<NSDictionary> attributes = {});

    /// Never null. Copies the text on every call; `characters` does not.
    Ref<NSString> string() const;
    /// In UTF-16; valid until the next edit.
    const std::u16string& characters() const { return characters_; }
    /// The number of UTF-16 units.
    uint32_t length() const { return static_cast<uint32_t>(characters_.size()); }

    /// `effectiveRange` receives a run with the same dictionary around the index, not necessarily the longest.
    Ref<NSDictionary> attributesAtIndex(uint32_t index, Range* effectiveRange = nullptr) const;
    /// `longestEffectiveRange` receives the longest run of equal dictionaries around the index inside `inRange`.
    Ref<NSDictionary> attributesAtIndex(uint32_t index, Range* longestEffectiveRange, Range inRange) const;
    /// The value of one attribute; null if the character does not have it, in which case the range is that of its
    /// absence.
    Ref<NSObject> attribute(const NSString& name, uint32_t atIndex, Range* longestEffectiveRange, Range inRange) const;

    /// Returns null if the range reaches beyond the text.
    Ref<NSAttributedString> attributedSubstringFromRange(Range range) const;
    /// An immutable copy.
    Ref<NSAttributedString> copy() const;

    /// Whether the texts are equal, with equal attributes for every character.
    bool isEqual(const NSObject& other) const override;
    size_t hash() const override;
    std::string description() const override;
    std::string className() const override { return "NSAttributedString"; }

protected:
    /// A stretch of text with one dictionary, starting at the end of the previous run; never empty. Adjacent runs may
    /// have equal dictionaries.
    struct Run {
        uint32_t end;                  ///< one past its last character, from the start of the text
        Ref<NSDictionary> attributes;  ///< never null, and may be shared with other runs
    };

    NSAttributedString() = default;
    /// The last run ends with the text; an empty text has no runs.
    NSAttributedString(std::u16string characters, std::vector<Run> runs);

    /// The run that contains the index, or the number of runs if it is beyond the text.
    size_t runIndexAt(uint32_t index) const;
    /// The start of a run; for the number of runs, the length of the text.
    uint32_t startOfRun(size_t run) const { return run == 0 ? 0 : runs_[run - 1].end; }
    /// The runs of any attributed string, for derived classes.
    static const std::vector<Run>& runsOf(const NSAttributedString& string) { return string.runs_; }

    std::u16string characters_;  ///< the text
    std::vector<Run> runs_;      ///< in order, without gaps
};

/// An attributed string that is edited in place. Edits return false and change nothing if their range reaches beyond
/// the text.
///
/// An edit that throws `std::bad_alloc` has changed nothing, unless an observer of the edit throws it. It is also
/// thrown if the text would exceed 2^31 - 1 units.
///
/// Appending takes amortised constant time per run, and changing attributes over a range takes time proportional to the
/// number of runs. Adding a font removes `NSOriginalFontAttributeName`, which recorded the previously requested font.
class NSMutableAttributedString : public NSAttributedString {
public:
    /// An empty text.
    static Ref<NSMutableAttributedString> init();
    /// Shares the dictionaries, which are never changed in place.
    static Ref<NSMutableAttributedString> initWithAttributedString(const NSAttributedString& other);

    /// Replaces text and attributes; here and below, `other` may be this string itself.
    void setAttributedString(const NSAttributedString& other);
    /// The appended characters keep their own attributes.
    void appendAttributedString(const NSAttributedString& other);
    /// Appends UTF-16; null attributes count as empty.
    void appendString(std::u16string_view characters, Ref<NSDictionary> attributes);
    /// The new characters keep their own attributes.
    bool replaceCharactersInRange(Range range, const NSAttributedString& withAttributedString);
    /// The new characters take the attributes of the first replaced character; for an insertion, those of the preceding
    /// character, or at the start those of the first.
    bool replaceCharactersInRange(Range range, const Ref<NSString>& withString);
    /// The text around the range keeps its attributes.
    bool deleteCharactersInRange(Range range);

    /// Replaces all attributes of the characters; null counts as empty.
    bool setAttributes(Ref<NSDictionary> attributes, Range range);
    /// Sets one attribute, replacing any former value; a null name or value is refused.
    bool addAttribute(const Ref<NSString>& name, const Ref<NSObject>& value, Range range);
    /// Sets several attributes, replacing former values.
    bool addAttributes(const NSDictionary& attributes, Range range);
    /// Returns true even if no character in the range has it.
    bool removeAttribute(const NSString& name, Range range);
    /// Replaces the dictionary of every run in the range by the result of `change`; null counts as empty. Calls
    /// `change` once for runs that share a dictionary object, which then share the result.
    bool changeAttributes(Range range, const Callback<Ref<NSDictionary>(const Ref<NSDictionary>&)>& change);

    std::string className() const override { return "NSMutableAttributedString"; }

protected:
    NSMutableAttributedString() = default;

    /// Replaces the runs in the range by others, whose ends count from the start of the text, and moves the following
    /// runs by `growth`. Merges adjacent runs of the same dictionary object. Changes no characters and notifies no
    /// observers.
    void replaceRuns(Range range, std::vector<Run> runs, int64_t growth = 0);

    /// Called after each edit with the current range of the edited characters and the growth of the text.
    virtual void edited(Range range, int64_t changeInLength, bool charactersChanged);
};

}  // namespace qz
