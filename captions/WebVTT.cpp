#include "captions/WebVTT.h"

#include <algorithm>
#include <utility>

#include "QzAnno/platform/foundation/Limits.h"
#include "captions/AsciiText.h"
#include "captions/CaptionEncoding.h"
#include "captions/CueAnnotator.h"
#include "captions/CueSettings.h"
#include "captions/CueText.h"
#include "platform/foundation/DiagnosticText.h"

namespace qz {
namespace {

constexpr std::string_view kArrow = "-->";
constexpr std::string_view kBlanks = " \t\f";

// Whether the line is the word, or begins with the word and a blank.
bool beginsWithWord(std::string_view line, std::string_view word) {
    return line.starts_with(word) &&
           (line.size() == word.size() || kBlanks.find(line[word.size()]) != std::string_view::npos);
}

// Reads a time line, "00:01.000 --> 00:02.500 align:start".
class TimeLineReader {
public:
    explicit TimeLineReader(std::string_view line) : rest_(line) {}

    // Fills times and settings; returns false, with `reason()` set, if the line is malformed.
    bool read(CaptionCue& cue) {
        if (!readTime(cue.start)) return false;
        skipBlanks();
        if (!rest_.starts_with(kArrow)) return fail("\"-->\" is expected between two times");
        rest_.remove_prefix(kArrow.size());
        if (!readTime(cue.end)) return false;
        if (cue.end < cue.start) return fail("the end is before the start");
        skipBlanks();
        cue.settings = rest_;
        return true;
    }
    const std::string& reason() const { return reason_; }

private:
    bool fail(const char* reason) {
        reason_ = reason;
        return false;
    }

    void skipBlanks() { rest_.remove_prefix(std::min(rest_.find_first_not_of(kBlanks), rest_.size())); }

    std::string_view digits() {
        const auto end = std::ranges::find_if_not(rest_, isDigit);
        const std::string_view found = rest_.substr(0, static_cast<size_t>(end - rest_.begin()));
        rest_.remove_prefix(found.size());
        return found;
    }

    // A sign followed by a fixed number of digits.
    bool readField(char sign, size_t count, double& value) {
        if (!rest_.starts_with(sign)) return false;
        rest_.remove_prefix(1);
        const std::string_view field = digits();
        value = numberOf(field);
        return field.size() == count;
    }

    static double numberOf(std::string_view field) {
        double value = 0;
        for (const char c : field) value = value * 10 + (c - '0');
        return value;
    }

    // "hours:minutes:seconds.milliseconds", where the hours may be missing.
    bool readTime(double& time) {
        skipBlanks();
        constexpr char form[] = "times are written 00:01:02.500";
        const std::string_view first = digits();
        // More hours than any programme needs would not be exact in a double.
        if (first.empty() || first.size() > 9) return fail(form);
        double hours = 0;
        double minutes = numberOf(first);
        double seconds = 0;
        double milliseconds = 0;
        if (!readField(':', 2, seconds)) return fail(form);
        if (rest_.starts_with(':') || first.size() != 2) {
            hours = std::exchange(minutes, seconds);
            if (!readField(':', 2, seconds)) return fail(form);
        }
        if (!readField('.', 3, milliseconds)) return fail(form);
        if (minutes > 59 || seconds > 59) return fail("minutes and seconds go up to 59");
        time = hours * 3600 + minutes * 60 + seconds + milliseconds / 1000;
        return true;
    }

    std::string_view rest_;
    std::string reason_;
};

// Follows W3C WebVTT, "WebVTT parser algorithm": a file is blocks between blank lines, and a block is a cue if its
// first or second line contains an arrow. An arrow further down ends the block and begins the next one.
class FileReader {
public:
    FileReader(std::string_view text, const CueNames& names, CaptionProblems& problems, const CueSink& sink)
        : sink_(sink),
          problems_(problems),
          rest_(text),
          annotator_(names, problems_, [](const CueSpan& span) { return lookOfWebVTTClass(span.name); }) {}

    void read() {
        const char* const header = rest_.data();
        nextLine();
        while (blockGoesOn()) readHeaderLine(nextLine());
        header_ = linesSince(header);
        while (hasLine()) {
            if (peekLine().empty())
                nextLine();
            else
                readBlock();
        }
    }
    // Valid after reading.
    std::string& header() { return header_; }
    std::string& trailer() { return skipped_; }

private:
    bool hasLine() const { return !rest_.empty(); }
    std::string_view peekLine() const { return rest_.substr(0, rest_.find('\n')); }
    static bool hasArrow(std::string_view line) { return line.find(kArrow) != std::string_view::npos; }
    // Whether the next line continues the block.
    bool blockGoesOn() const { return hasLine() && !peekLine().empty() && !hasArrow(peekLine()); }

    std::string_view nextLine() {
        const std::string_view line = peekLine();
        rest_.remove_prefix(std::min(line.size() + 1, rest_.size()));
        ++line_;
        return line;
    }

    // From there to the next line, without the empty lines at the end.
    std::string_view linesSince(const char* begin) const {
        std::string_view lines(begin, static_cast<size_t>(rest_.data() - begin));
        while (lines.ends_with('\n')) lines.remove_suffix(1);
        return lines;
    }

    // Keeps the block for writing, above the next cue.
    void skipBlockSince(const char* begin) {
        if (!skipped_.empty()) skipped_ += "\n\n";
        skipped_ += linesSince(begin);
    }

    // Reports something that is skipped.
    void report(uint32_t line, std::string message) {
        problems_.add(CaptionProblem::notShown, line, std::move(message));
    }

    // Handles a header line that has been passed. Others are irrelevant, such as "Kind: captions".
    void readHeaderLine(std::string_view line) {
        if (line.starts_with("X-TIMESTAMP-MAP"))
            problems_.addOnce(CaptionProblem::notShown, line_ - 1,
                              "X-TIMESTAMP-MAP is ignored; times count from the start of the programme");
        else if (line.starts_with("Region:"))
            tellRegion(line_ - 1);
    }

    void tellRegion(uint32_t line) {
        problems_.addOnce(CaptionProblem::notShown, line,
                          "regions are ignored; text is set in lines on the whole screen");
    }

    void readBlock() {
        const uint32_t firstLine = line_;
        const char* const begin = rest_.data();
        std::string_view identifier;
        if (!hasArrow(peekLine())) {
            identifier = nextLine();
            if (!hasLine() || !hasArrow(peekLine())) {
                skipBlockWithoutTimes(identifier, firstLine);
                skipBlockSince(begin);
                return;
            }
        }
        if (!readCue(identifier)) skipBlockSince(begin);
    }

    // Returns false if the cue is malformed.
    bool readCue(std::string_view identifier) {
        CaptionCue cue;
        cue.identifier = identifier;
        cue.line = line_;
        const std::string_view timeLine = nextLine();
        TimeLineReader times(timeLine);
        const bool isWhole = times.read(cue);
        if (!isWhole) {
            report(cue.line, "the time line " + quotedExcerpt(timeLine) + " is malformed: " + times.reason() +
                                 "; the cue is skipped");
        }
        const char* const payload = rest_.data();
        const char* payloadEnd = payload;
        while (blockGoesOn()) {
            const std::string_view line = nextLine();
            payloadEnd = line.data() + line.size();
        }
        if (!isWhole) return false;
        if (payloadEnd - payload > Limits::kTitleUnitsMax) {
            report(cue.line, "the cue has " + std::to_string(payloadEnd - payload) + " characters; " +
                                 std::to_string(Limits::kTitleUnitsMax) + " is the limit; the cue is skipped");
            return false;
        }
        cue.placement = parseCueSettings(cue.settings, cue.line, problems_);
        cue.payload = {payload, static_cast<size_t>(payloadEnd - payload)};
        cue.text = annotator_.annotated(parseCueText(cue.payload, cue.line + 1, &problems_));
        cue.preamble = std::exchange(skipped_, {});
        sink_(std::move(cue));
        return true;
    }

    // Skips comments, style sheets, regions, and malformed cues.
    void skipBlockWithoutTimes(std::string_view firstLine, uint32_t firstNumber) {
        std::string_view suspect = firstLine;
        uint32_t suspectNumber = firstNumber;
        while (blockGoesOn()) {
            const uint32_t number = line_;
            const std::string_view line = nextLine();
            // Below an identifier, a time line with half an arrow is the likely mistake.
            if (number != firstNumber + 1 || line.find("->") == std::string_view::npos) continue;
            suspect = line;
            suspectNumber = number;
        }
        if (beginsWithWord(firstLine, "NOTE")) return;
        if (beginsWithWord(firstLine, "REGION")) return tellRegion(firstNumber);
        if (beginsWithWord(firstLine, "STYLE")) {
            return problems_.addOnce(CaptionProblem::notShown, firstNumber,
                                     "style sheets are ignored; the palette has the styles of classes and voices");
        }
        report(suspectNumber,
               quotedExcerpt(suspect) +
                   " belongs to no cue, since no line with \"-->\" between two times is above its text; it is skipped");
    }

    const CueSink& sink_;
    CaptionProblems& problems_;
    std::string_view rest_;
    CueAnnotator annotator_;
    std::string header_;
    // Blocks since the last cue.
    std::string skipped_;
    // The number of the next line.
    uint32_t line_ = 1;
};

bool hasSignature(std::string_view text) {
    return beginsWithWord(text.substr(0, text.find_first_of("\r\n")), "WEBVTT");
}

}  // namespace

bool beginsAsWebVTT(std::string_view bytes) {
    return hasSignature(withoutMark(bytes));
}

std::optional<CaptionFile> readWebVTT(const NSData& file, const CueNames& names, const CueSink& sink,
                                      CaptionProblem* error) {
    CaptionProblems problems;
    const std::optional<std::string> read = repairedTextOfFile(file, problems, error);
    if (!read) return {};
    if (!hasSignature(*read)) {
        if (error) {
            *error = {CaptionProblem::malformed, 1,
                      "the file does not begin with \"WEBVTT\"; give it that first line and a blank one below, or "
                      "convert it to WebVTT"};
        }
        return {};
    }
    const std::string text = withLineFeeds(*read);
    FileReader reader(text, names, problems, sink);
    reader.read();
    CaptionFile captions;
    captions.problems = problems.take();
    captions.header = std::move(reader.header());
    captions.trailer = std::move(reader.trailer());
    return captions;
}

}  // namespace qz
