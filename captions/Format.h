#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "captions/CaptionFile.h"
#include "captions/CaptionWriter.h"

namespace qz {

/// A file format for titles. Everything about a format is in its row of `formats`; no other code refers to a format by
/// name.
struct Format {
    enum Kind : unsigned {
        captions = 1,  ///< titles with times
        text = 2,      ///< one title without markup
        archive = 4,   ///< annotated strings without times
        any = captions | text | archive
    };
    /// Parts of a title that a format may be unable to hold.
    enum Part : unsigned { times = 1, identifiers = 2, places = 4, markup = 8, comments = 16 };

    Kind kind;
    std::string_view name;
    /// In lower case, each with its point; files are written with the first.
    std::vector<std::string_view> endings;
    /// Empty for formats that do not belong to title editors.
    std::string_view mimeType;
    /// Whether the bytes begin like such a file; null if the format cannot be recognised by its content.
    bool (*begins)(std::string_view bytes);
    CaptionReader read;
    /// Null for a format that is only read.
    CaptionWriter write;
    /// The parts of titles that are lost in writing.
    unsigned cannotHold;
    /// Whether reading and writing a file preserves everything except edits.
    bool keepsItsFiles;

    bool hasTimes() const { return kind == captions; }
    std::string_view ending() const { return endings.front(); }
};

/// All formats, in the order in which they are listed for users.
std::span<const Format> formats();

/// The format for the ending of a file's name, ignoring case; null if there is none.
const Format* formatOfPath(std::string_view path);
/// The same for a file to be written.
const Format* formatToWrite(std::string_view path);
/// The likely format of the bytes, or null.
const Format* formatOfContent(std::string_view bytes);

/// The endings of all formats of these kinds.
std::vector<std::string> endingsOf(unsigned kinds);
std::vector<std::string> writtenEndingsOf(unsigned kinds);
/// ".srt, .vtt or .ass"; `last` separates the last two.
std::string listOf(const std::vector<std::string>& words, std::string_view last = " or ");

/// One line for each part that these captions have and the format cannot hold.
std::vector<std::string> lossesIn(const Format& format, const CaptionFile& captions);

}  // namespace qz
