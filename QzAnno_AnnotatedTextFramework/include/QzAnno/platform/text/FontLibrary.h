#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace qz {

class FontFace;
class FontFallback;
struct FontSynthesis;
struct FontTraits;

/// A font as listed by Fontconfig, without opening its file. Each named instance of a variable font is a separate font.
struct InstalledFont {
    std::string path;  ///< the font file
    int index = 0;     ///< the face in the file in the lower 16 bits, the named instance, from 1, in the upper bits
    std::string postScriptName;  ///< may be empty
    std::string fullName;        ///< in English if the font has such a name, else its first
    std::string familyName;      ///< as `fullName`
    std::string styleName;       ///< as `fullName`
    /// The name that finds this font in the library: PostScript name, full name or family-style.
    std::string fontName;
    // Fontconfig's scales.
    double weight = 80;     ///< 80 regular, 200 bold
    double width = 100;     ///< per cent of the normal width
    int slant = 0;          ///< 0 upright, 100 italic, 110 oblique
    int version = 0;        ///< the font revision in its "head" table, 16.16; 0 if unknown
    bool isColour = false;  ///< whether it has colour glyphs
    bool isAdded = false;   ///< from a folder given to the library

    /// True from semibold on.
    bool isBold() const { return weight >= 180; }
    /// True for oblique too.
    bool isItalic() const { return slant != 0; }
};

/// A problem with a folder of fonts or a file in it.
struct FontProblem {
    std::string path;  ///< the folder or file
    std::string what;  ///< text to follow the path and a colon, without a full stop
};

/// The scalable fonts in SFNT files that text may use, and their opened faces: the system's fonts, listed once per
/// process, alone or together with those in folders of the host's.
///
/// A palette chooses the library for looking up its font names, and every `NSFont` keeps the library that it comes
/// from. Threads may share a library: the list never changes, and locks guard the faces and the fallback cache. A font
/// whose file is missing or damaged counts as missing, which is logged once.
class FontLibrary {
public:
    /// The system's fonts.
    static const std::shared_ptr<FontLibrary>& shared();
    /// The fonts in the folders and their subfolders, followed by the system's, without installing anything or
    /// affecting other libraries. Reads every font file in the folders. Returns null if a folder cannot be read.
    /// `problems`, if given, receives the problems with folders and files; a file that is not a font is left out.
    static std::shared_ptr<FontLibrary> withDirectories(const std::vector<std::string>& directories,
                                                        std::vector<FontProblem>* problems = nullptr);
    ~FontLibrary();

    /// Fonts from added folders come first, then newer versions before older ones; valid as long as the library lives.
    const std::vector<InstalledFont>& fonts() const;
    /// Finds a font by PostScript name, full name, "family-style" or family, in this order, in any language of the
    /// font's names, ignoring case. Returns null if there is no such font.
    const InstalledFont* fontWithName(std::string_view name) const;
    /// At most `count` suggestions for an unknown name, for messages: fonts of the family that it begins with, the most
    /// regular first, or else of the family whose name differs least, by two letters at most.
    std::vector<std::string> namesLike(std::string_view name, size_t count) const;
    /// The font in a file, with `InstalledFont`'s index; null if the library does not list it.
    const InstalledFont* fontOfFile(std::string_view path, int index) const;

    /// The face of a font, which must be an element of `fonts`, not a copy; the same face as long as it is referenced.
    /// Null if its file cannot be used.
    ///@{
    std::shared_ptr<const FontFace> face(const InstalledFont& font);
    std::shared_ptr<const FontFace> face(const InstalledFont& font, FontSynthesis synthesis);
    ///@}
    /// The face of `fontWithName`, or, if its file cannot be used, of another font with the same name and look; null if
    /// there is neither.
    std::shared_ptr<const FontFace> faceWithName(std::string_view name);
    /// The nearest face of the font's family that has these traits and covers the text, synthesised if the family has
    /// no such face. Null for a colour font, or if no face of the family covers the text.
    std::shared_ptr<const FontFace> faceWithTraits(const InstalledFont& font, FontTraits traits,
                                                   std::u16string_view text = {});
    /// The face for text without a named font; a face without glyphs if there are no fonts.
    std::shared_ptr<const FontFace> systemFace();
    /// Finds fonts in this library for characters missing from a font; lives as long as the library.
    FontFallback& fallback() { return *fallback_; }

private:
    struct Configuration;
    struct OpenedFace;
    class Index;

    explicit FontLibrary(std::unique_ptr<const Configuration> configuration);

    std::shared_ptr<const FontFace> chooseSystemFace();

    const std::unique_ptr<const Configuration> configuration_;
    const std::unique_ptr<const Index> index_;
    const std::unique_ptr<FontFallback> fallback_;
    std::mutex mutex_;
    std::vector<OpenedFace> faces_;  // one per font in the list
    // The most recently used faces, kept open between titles that use them.
    std::vector<std::shared_ptr<const FontFace>> recent_;
    std::shared_ptr<const FontFace> systemFace_;
};

}  // namespace qz
