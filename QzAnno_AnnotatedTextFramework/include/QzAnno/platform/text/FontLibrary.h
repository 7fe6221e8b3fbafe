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
    std::string familyName;      ///< likewise
    std::string styleName;       ///< likewise
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

/// The scalable fonts in SFNT files that text may use, and the opened faces: those of this machine, listed once per
/// process, or these and the ones in folders of the host's.
///
/// Threads may share a library: the list never changes, and locks guard the faces and what fallback remembers. A font
/// whose file has gone or is damaged is as good as not there, which the log says once.
class FontLibrary {
public:
    /// The fonts of this machine.
    static const std::shared_ptr<FontLibrary>& shared();
    /// The fonts of this machine, and before them those in the folders and the folders below; nothing is installed, and
    /// other libraries do not change. None when a folder cannot be read. `problems`, when given, receives what is wrong
    /// with folders and files; a file that is no font is left out. Reads every font file of the folders.
    static std::shared_ptr<FontLibrary> withDirectories(const std::vector<std::string>& directories,
                                                        std::vector<FontProblem>* problems = nullptr);
    /// The library in which this thread looks fonts up: that of the innermost `Use`, or the shared one.
    static FontLibrary& current();
    ~FontLibrary();

    /// Makes a library the current one of this thread for a scope; none leaves all as it is.
    class Use {
    public:
        /// Keeps the library alive meanwhile.
        explicit Use(std::shared_ptr<FontLibrary> library);
        /// Brings back the library that was current before, so uses end on their thread, the innermost first.
        ~Use();
        Use(const Use&) = delete;
        Use& operator=(const Use&) = delete;

    private:
        const std::shared_ptr<FontLibrary> library_;
        FontLibrary* const former_;
    };

    /// Those of added folders first, then newer versions first; stands as long as the library.
    const std::vector<InstalledFont>& fonts() const;
    /// The font of that PostScript name, full name, "family-style" or family, in this order, in any language of the
    /// font's own names and without regard to case; none when there is none.
    const InstalledFont* fontWithName(std::string_view name) const;
    /// Names, at most `count`, that whoever wrote this one may have meant: fonts of the family that it begins with, the
    /// most regular first, or else of the family whose name differs least, by two letters at most. For messages.
    std::vector<std::string> namesLike(std::string_view name, size_t count) const;
    /// The font of a file, with the index of `InstalledFont`; none when the library does not list it.
    const InstalledFont* fontOfFile(std::string_view path, int index) const;

    /// The face of a font of this library, an element of `fonts` and no copy; the same face as long as anybody holds
    /// it. None when its file is of no use.
    ///@{
    std::shared_ptr<const FontFace> face(const InstalledFont& font);
    std::shared_ptr<const FontFace> face(const InstalledFont& font, FontSynthesis synthesis);
    ///@}
    /// The face of `fontWithName`; when its file is of no use, that of another font which bears the name and looks the
    /// same. None without either.
    std::shared_ptr<const FontFace> faceWithName(std::string_view name);
    /// The face with these traits of the font's family that covers the text and otherwise comes nearest, synthesised
    /// where the family has no such face. Null for a font in colours, or when no face of the family covers the text.
    std::shared_ptr<const FontFace> faceWithTraits(const InstalledFont& font, FontTraits traits,
                                                   std::u16string_view text = {});
    /// The face that serves where none is named; one without glyphs when there are no fonts.
    std::shared_ptr<const FontFace> systemFace();
    /// What finds fonts of this library for characters that the font asked for lacks; lives as long as the library.
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
