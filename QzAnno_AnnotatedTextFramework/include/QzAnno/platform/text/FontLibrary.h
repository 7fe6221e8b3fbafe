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

/// A font as Fontconfig lists it, without opening its file. A named instance of a variable font is a font of its own.
struct InstalledFont {
    std::string path;  ///< of the file
    int index = 0;     ///< the face within the file in the lower 16 bits, the named instance, from 1, in the upper ones
    std::string postScriptName;  ///< may be empty
    std::string fullName;        ///< in English when the font has such a name, else the first that it has
    std::string familyName;      ///< the same
    std::string styleName;       ///< the same
    /// The name by which the library finds this font again: PostScript name, full name or family-style.
    std::string fontName;
    // Fontconfig's scales.
    double weight = 80;     ///< 80 regular, 200 bold
    double width = 100;     ///< per cent of the normal width
    int slant = 0;          ///< 0 upright, 100 italic, 110 oblique
    int version = 0;        ///< the font revision of its "head" table, 16.16; 0 when it is not known
    bool isColour = false;  ///< whether it has colour glyphs
    bool isAdded = false;   ///< from a folder given to the library

    /// From semibold on.
    bool isBold() const { return weight >= 180; }
    /// Oblique too.
    bool isItalic() const { return slant != 0; }
};

/// Something about a folder of fonts, or a file in it, that its owner should know.
struct FontProblem {
    std::string path;  ///< of the folder or the file
    std::string what;  ///< a clause to stand behind the path and a colon, without a full stop
};

/// The scalable fonts in SFNT files that text may use, and their opened faces: the fonts of this machine, listed once
/// per process, alone or together with those in folders of the host's.
///
/// A palette says which library the names of its fonts are looked up in, and every `NSFont` keeps the library that it
/// comes from. Threads may share a library: the list never changes, and locks guard the faces and what fallback
/// remembers. A font whose file is gone or damaged counts as missing, which is logged once.
class FontLibrary {
public:
    /// The fonts of this machine.
    static const std::shared_ptr<FontLibrary>& shared();
    /// The fonts in the folders and their subfolders, followed by those of this machine; nothing is installed, and
    /// other libraries do not change. Null if a folder cannot be read. `problems`, when given, receives what is wrong
    /// with folders and files; a file that is not a font is left out. Reads every font file of the folders.
    static std::shared_ptr<FontLibrary> withDirectories(const std::vector<std::string>& directories,
                                                        std::vector<FontProblem>* problems = nullptr);
    ~FontLibrary();

    /// Fonts of added folders first, then newer versions first; valid as long as the library lives.
    const std::vector<InstalledFont>& fonts() const;
    /// The font of that PostScript name, full name, "family-style" or family, in this order, in any language of the
    /// font's own names, ignoring case; null if there is no such font.
    const InstalledFont* fontWithName(std::string_view name) const;
    /// Names, at most `count`, that whoever wrote this one may have meant: fonts of the family that it begins with, the
    /// most regular first, or else of the family whose name differs least, by two letters at most. For messages.
    std::vector<std::string> namesLike(std::string_view name, size_t count) const;
    /// The font of a file, with the index of `InstalledFont`; null if the library does not list it.
    const InstalledFont* fontOfFile(std::string_view path, int index) const;

    /// The face of a font of this library, which must be an element of `fonts`, not a copy; the same face as long as
    /// anybody holds it. Null if its file cannot be used.
    ///@{
    std::shared_ptr<const FontFace> face(const InstalledFont& font);
    std::shared_ptr<const FontFace> face(const InstalledFont& font, FontSynthesis synthesis);
    ///@}
    /// The face of `fontWithName`; if its file cannot be used, that of another font with the same name and looks. Null
    /// if there is neither.
    std::shared_ptr<const FontFace> faceWithName(std::string_view name);
    /// The face with these traits of the font's family that covers the text and otherwise comes nearest, synthesised
    /// where the family has no such face. Null for a font in colours, or when no face of the family covers the text.
    std::shared_ptr<const FontFace> faceWithTraits(const InstalledFont& font, FontTraits traits,
                                                   std::u16string_view text = {});
    /// The face that stands in where no font is named; one without glyphs if there are no fonts.
    std::shared_ptr<const FontFace> systemFace();
    /// Finds fonts of this library for characters that a font lacks; lives as long as the library.
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
    std::vector<OpenedFace> faces_;  // one for each font of the index
    // The faces used last; they stay open between two titles that use them.
    std::vector<std::shared_ptr<const FontFace>> recent_;
    std::shared_ptr<const FontFace> systemFace_;
};

}  // namespace qz
