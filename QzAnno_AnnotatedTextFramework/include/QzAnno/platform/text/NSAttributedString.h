#pragma once

#include <vector>

#include "QzAnno/platform/foundation/Callback.h"
#include "QzAnno/platform/foundation/NSDictionary.h"
#include "QzAnno/platform/foundation/NSString.h"

namespace qz {

// The names under which attributed strings hold what the text system reads. The values are part of stored palettes.
inline const Ref<NSString> NSFontAttributeName = "NSFont"_ns;                      ///< `NSFont`
inline const Ref<NSString> NSForegroundColorAttributeName = "NSColor"_ns;          ///< `NSColor`; black without it
inline const Ref<NSString> NSParagraphStyleAttributeName = "NSParagraphStyle"_ns;  ///< `NSParagraphStyle`
inline const Ref<NSString> NSKernAttributeName = "NSKern"_ns;  ///< number: points added to each advance
inline const Ref<NSString> NSObliquenessAttributeName =
    "NSObliqueness"_ns;  ///< number: shear to the right, per unit of height
inline const Ref<NSString> NSBaselineOffsetAttributeName = "NSBaselineOffset"_ns;  ///< number: points upward
/// `NSFont`: the font that was asked for where another serves, because it lacks the characters. Set by the text
/// storage.
inline const Ref<NSString> NSOriginalFontAttributeName = "NSOriginalFont"_ns;
/// String: the language of the text as a BCP 47 tag. It tells which fonts serve characters that the font asked for
/// lacks, and how a font shapes its letters.
inline const Ref<NSString> NSLanguageAttributeName = "NSLanguage"_ns;

/// A text whose every character has a dictionary of attributes, kept as runs. Ranges and indices count UTF-16 units.
///
/// A query outside the text, or whose index lies outside its range, yields none and leaves its out-range unwritten.
class NSAttributedString : public NSObject {
public:
    /// The empty text.
    static Ref<NSAttributedString> init();
    /// No string is the empty text, and no attributes are the empty dictionary.
    static Ref<NSAttributedString> initWithString(const Ref<NSString>& string, Ref<NSDictionary> attributes = {});

    /// Never none; a copy of the text at every call, which `characters` does without.
    Ref<NSString> string() const;
    /// UTF-16; stands until the next edit.
    const std::u16string& characters() const { return characters_; }
    /// In UTF-16 units.
    uint32_t length() const { return static_cast<uint32_t>(characters_.size()); }

    /// `effectiveRange` receives a run of the same dictionary around the index, not always the longest.
    Ref<NSDictionary> attributesAtIndex(uint32_t index, Range* effectiveRange = nullptr) const;
    /// The longest run of equal dictionaries around the index inside `inRange`.
    Ref<NSDictionary> attributesAtIndex(uint32_t index, Range* longestEffectiveRange, Range inRange) const;
    /// One attribute; none when the character lacks it, the range being that of its lack.
    Ref<NSObject> attribute(const NSString& name, uint32_t atIndex, Range* longestEffectiveRange, Range inRange) const;

    /// None when the range reaches beyond the text.
    Ref<NSAttributedString> attributedSubstringFromRange(Range range) const;
    /// An immutable copy.
    Ref<NSAttributedString> copy() const;

    /// Equal texts with equal attributes at every character.
    bool isEqual(const NSObject& other) const override;
    size_t hash() const override;
    std::string description() const override;
    std::string className() const override { return "NSAttributedString"; }

protected:
    /// A stretch of text with one dictionary, which begins where the one before ends; never empty. Neighbours may hold
    /// equal dictionaries.
    struct Run {
        uint32_t end;                  ///< the position after its last character, from the start of the text
        Ref<NSDictionary> attributes;  ///< never none, and shared with other runs
    };

    NSAttributedString() = default;
    /// The last run ends with the text; an empty text has no runs.
    NSAttributedString(std::u16string characters, std::vector<Run> runs);

    /// The run that holds the index; the number of runs beyond the text.
    size_t runIndexAt(uint32_t index) const;
    /// Of the run of that number; the length of the text for the number of runs.
    uint32_t startOfRun(size_t run) const { return run == 0 ? 0 : runs_[run - 1].end; }
    /// The runs of any attributed string, for derived classes.
    static const std::vector<Run>& runsOf(const NSAttributedString& string) { return string.runs_; }

    std::u16string characters_;  ///< the text
    std::vector<Run> runs_;      ///< in order, without gaps
};

/// An attributed string that is edited in place. Edits whose range reaches beyond the text are refused: false, and
/// nothing changed.
///
/// An edit that ends with `std::bad_alloc` has changed nothing, unless it is one who is told of the edit that throws.
/// So ends an edit that would make the text longer than 2^31 - 1 units.
///
/// Appending takes amortised constant time a run, and changing attributes over a range time in proportion to the number
/// of runs. A font that is added is a font asked for: it takes `NSOriginalFontAttributeName` away, which told of the
/// one before.
class NSMutableAttributedString : public NSAttributedString {
public:
    /// The empty text.
    static Ref<NSMutableAttributedString> init();
    /// With the same text, and the same dictionaries, which are never changed in place.
    static Ref<NSMutableAttributedString> initWithAttributedString(const NSAttributedString& other);

    /// Replaces text and attributes; as below, the other may be this string itself.
    void setAttributedString(const NSAttributedString& other);
    /// The appended characters keep their own attributes.
    void appendAttributedString(const NSAttributedString& other);
    /// UTF-16; no attributes are the empty dictionary.
    void appendString(std::u16string_view characters, Ref<NSDictionary> attributes);
    /// The new characters keep their own attributes.
    bool replaceCharactersInRange(Range range, const NSAttributedString& withAttributedString);
    /// The new characters take the attributes of the first replaced one; of the character before, for an insertion; of
    /// the first character, at the start.
    bool replaceCharactersInRange(Range range, const Ref<NSString>& withString);
    /// What stands around keeps its attributes.
    bool deleteCharactersInRange(Range range);

    /// In the place of all attributes that the characters have; none are the empty dictionary.
    bool setAttributes(Ref<NSDictionary> attributes, Range range);
    /// In the place of an attribute of that name; no name, or no value, is refused.
    bool addAttribute(const Ref<NSString>& name, const Ref<NSObject>& value, Range range);
    /// In the place of attributes of the same names.
    bool addAttributes(const NSDictionary& attributes, Range range);
    /// True also when no character of the range has it.
    bool removeAttribute(const NSString& name, Range range);
    /// Replaces the dictionary of every run of the range by what `change` makes of it; none stands for the empty
    /// dictionary. Runs of the same dictionary object are asked about once and keep sharing theirs.
    bool changeAttributes(Range range, const Callback<Ref<NSDictionary>(const Ref<NSDictionary>&)>& change);

    std::string className() const override { return "NSMutableAttributedString"; }

protected:
    NSMutableAttributedString() = default;

    /// Puts runs in the place of those of the range, their ends counted from the start of the text, and moves the runs
    /// behind it by `growth`. Neighbours of the same dictionary object become one. Changes no characters and tells
    /// nobody.
    void replaceRuns(Range range, std::vector<Run> runs, int64_t growth = 0);

    /// Called after each edit: the range that holds the edited characters now, and by how much the text grew.
    virtual void edited(Range range, int64_t changeInLength, bool charactersChanged);
};

}  // namespace qz
