#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace qz {

class FontFace;

/// A font as Fontconfig lists it, without opening its file. A named instance of a variable font is a font of its own.
struct InstalledFont {
    std::string path;
    int index = 0;  ///< the face within the file in the lower 16 bits, the named instance, from 1, in the upper ones
    std::string postScriptName;
    std::string fullName;
    std::string familyName;
    std::string styleName;
    /// The name by which the library finds this font again: PostScript name, full name or family-style.
    std::string fontName;
    // Fontconfig's scales.
    double weight = 80;  ///< 80 regular, 200 bold
    double width = 100;  ///< per cent of the normal width
    int slant = 0;       ///< 0 upright, 100 italic, 110 oblique
    int version = 0;
    bool isColour = false;
};

/// The scalable fonts of this machine in SFNT files, listed once per process, and the opened faces.
///
/// May be used from several threads: the list never changes, and a lock guards the faces. A font whose file has gone or
/// is damaged is as good as not installed, which the log says once.
class FontLibrary {
public:
    static FontLibrary& shared();
    ~FontLibrary();

    const std::vector<InstalledFont>& fonts() const;
    /// The font of that PostScript name, full name, "family-style" or family, in this order, in any language of the
    /// font's own names and without regard to case; none when there is none.
    const InstalledFont* fontWithName(std::string_view name) const;
    const InstalledFont* fontOfFile(std::string_view path, int index) const;

    /// The face of a font of this library; the same one as long as anybody holds it. None when its file is of no use.
    std::shared_ptr<const FontFace> face(const InstalledFont& font);
    std::shared_ptr<const FontFace> faceWithName(std::string_view name);
    /// The face that serves where none is named; one without glyphs when the machine has no fonts.
    std::shared_ptr<const FontFace> systemFace();

private:
    FontLibrary();

    struct OpenedFace;
    class Index;

    std::shared_ptr<const FontFace> chooseSystemFace();

    const std::unique_ptr<const Index> index_;
    std::mutex mutex_;
    std::vector<OpenedFace> faces_;  // one for each font of the index
    // The faces used last; they stay open between two titles that use them.
    std::vector<std::shared_ptr<const FontFace>> recent_;
    std::once_flag systemFaceChosen_;
    std::shared_ptr<const FontFace> systemFace_;
};

}  // namespace qz
