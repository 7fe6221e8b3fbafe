#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "captions/CaptionFile.h"
#include "captions/CaptionWriter.h"

namespace qz {

/// A form in which files hold titles. All there is to know of it stands in its row of `formats`; nothing else asks for
/// a format by its name.
struct Format {
    enum Kind : unsigned {
        captions = 1,  ///< titles with times
        text = 2,      ///< one title without marks
        archive = 4,   ///< annotated strings without times
        any = captions | text | archive
    };
    /// What of a title a format may be unable to hold.
    enum Part : unsigned { times = 1, identifiers = 2, places = 4, markup = 8, comments = 16 };

    Kind kind;
    std::string_view name;
    /// In lower case, each with its point; files are written with the first.
    std::vector<std::string_view> endings;
    /// Empty for formats that belong to no editor of titles.
    std::string_view mimeType;
    /// Whether the bytes begin as such a file does; null for a format that cannot be told by its content.
    bool (*begins)(std::string_view bytes);
    CaptionReader read;
    /// Null for a format that is only read.
    CaptionWriter write;
    /// The parts of titles that are lost when they are written.
    unsigned cannotHold;
    /// Whether a file that is read and written again is the same but for what was edited in between.
    bool keepsItsFiles;

    bool hasTimes() const { return kind == captions; }
    std::string_view ending() const { return endings.front(); }
};

/// In the order in which they are listed for users.
std::span<const Format> formats();

/// By the ending of a file's name, whatever its case; null for any other.
const Format* formatOfPath(std::string_view path);
/// The same for a file to be written.
const Format* formatToWrite(std::string_view path);
/// What the bytes seem to be; null when they are like no format.
const Format* formatOfContent(std::string_view bytes);

/// Of formats of these kinds.
std::vector<std::string> endingsOf(unsigned kinds);
std::vector<std::string> writtenEndingsOf(unsigned kinds);
/// ".srt, .vtt or .ass"; `last` stands between the last two.
std::string listOf(const std::vector<std::string>& words, std::string_view last = " or ");

/// A line for each part of the titles that the format cannot hold and these captions have.
std::vector<std::string> lossesIn(const Format& format, const CaptionFile& captions);

}  // namespace qz
