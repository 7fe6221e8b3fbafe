#include "captions/SubRip.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <string_view>

#include "QzAnno/platform/foundation/Limits.h"
#include "captions/AsciiText.h"
#include "captions/CaptionEncoding.h"
#include "captions/CueAnnotator.h"
#include "captions/SubRipText.h"
#include "platform/foundation/DiagnosticText.h"

namespace qz {
namespace {

constexpr std::string_view kBlanks = " \t\f";
// More digits than any programme needs; larger numbers would not be exact in a double.
constexpr size_t kDigitsMax = 9;

bool isNumber(std::string_view line) {
    line = trimmed(line, kBlanks);
    return !line.empty() && std::ranges::all_of(line, isDigit);
}

/// Whether the line is a time line, even a malformed one: "1:02 -> 1:04".
bool isTimeLine(std::string_view line) {
    line = trimmed(line, kBlanks);
    const size_t arrow = line.find("->");
    return !line.empty() && isDigit(line.front()) && arrow != std::string_view::npos && line.find(':') < arrow;
}

/// "00:01:02,500"
std::string written(double seconds) {
    const auto milliseconds = static_cast<uint64_t>(std::llround(seconds * 1000));
    char text[48];
    std::snprintf(text, sizeof text, "%02llu:%02llu:%02llu,%03llu",
                  static_cast<unsigned long long>(milliseconds / 3600000),
                  static_cast<unsigned long long>(milliseconds / 60000 % 60),
                  static_cast<unsigned long long>(milliseconds / 1000 % 60),
                  static_cast<unsigned long long>(milliseconds % 1000));
    return text;
}

/// Reads "00:01:02,500 --> 00:01:04,000" and common variations.
class TimeLineReader {
public:
    explicit TimeLineReader(std::string_view line) : rest_(line) {}

    bool read(CaptionCue& cue) {
        if (!readTime(cue.start)) return false;
        skipBlanks();
        isUsual_ &= rest_.starts_with("-->");
        const size_t arrow = rest_.find_first_not_of('-');
        if (arrow == 0 || arrow == std::string_view::npos || rest_[arrow] != '>') return false;
        rest_.remove_prefix(arrow + 1);
        if (!readTime(cue.end)) return false;
        rest_ = trimmed(rest_, kBlanks);
        return true;
    }

    bool isUsual() const { return isUsual_; }
    std::string_view rest() const { return rest_; }

private:
    void skipBlanks() { rest_.remove_prefix(std::min(rest_.find_first_not_of(kBlanks), rest_.size())); }

    std::string_view digits() {
        isUsual_ &= !rest_.starts_with(' ');
        skipBlanks();
        const auto end = std::ranges::find_if_not(rest_, isDigit);
        const std::string_view found = rest_.substr(0, static_cast<size_t>(end - rest_.begin()));
        rest_.remove_prefix(found.size());
        return found;
    }

    static double numberOf(std::string_view digits) {
        double value = 0;
        for (const char c : digits) value = value * 10 + (c - '0');
        return value;
    }

    bool takeSign(std::string_view signs) {
        const std::string_view before = rest_;
        skipBlanks();
        if (!rest_.empty() && signs.find(rest_.front()) != std::string_view::npos) {
            isUsual_ &= before.size() == rest_.size();
            rest_.remove_prefix(1);
            return true;
        }
        rest_ = before;
        return false;
    }

    bool readTime(double& seconds) {
        skipBlanks();
        int fields = 0;
        seconds = 0;
        do {
            const std::string_view field = digits();
            if (field.empty() || field.size() > kDigitsMax || ++fields > 3) return false;
            const double value = numberOf(field);
            isUsual_ &= fields == 1 || (field.size() == 2 && value < 60);
            seconds = seconds * 60 + value;
        } while (takeSign(":"));
        if (fields < 2) return false;
        isUsual_ &= fields == 3;
        if (!takeSign(",.")) {
            isUsual_ = false;
            return true;
        }
        const std::string_view fraction = digits();
        if (fraction.empty() || fraction.size() > kDigitsMax) return false;
        isUsual_ &= fraction.size() == 3;
        seconds += numberOf(fraction) / std::pow(10.0, static_cast<double>(fraction.size()));
        // Makes equal times equal, however they are written.
        seconds = std::round(seconds * 1000) / 1000;
        return true;
    }

    std::string_view rest_;
    bool isUsual_ = true;
};

class FileReader {
public:
    FileReader(std::string_view text, const CueNames& names, CaptionProblems& problems, const CueSink& sink)
        : sink_(sink), problems_(problems), annotator_(names, problems_), textReader_(problems_) {
        while (!text.empty()) {
            lines_.push_back(text.substr(0, text.find('\n')));
            text.remove_prefix(std::min(lines_.back().size() + 1, text.size()));
        }
    }

    void read() {
        while (next_ < lines_.size()) {
            if (isBlank(next_)) {
                ++next_;
            } else if (isCueStart(next_)) {
                readCue();
            } else {
                skipStrayLines();
            }
        }
    }

private:
    bool isBlank(size_t line) const { return trimmed(lines_[line], kBlanks).empty(); }
    bool isCueStart(size_t line) const {
        return isTimeLine(lines_[line]) ||
               (isNumber(lines_[line]) && line + 1 < lines_.size() && isTimeLine(lines_[line + 1]));
    }
    static uint32_t numberOf(size_t line) { return static_cast<uint32_t>(line + 1); }

    void report(size_t line, std::string message, CaptionProblem::Kind kind = CaptionProblem::malformed) {
        problems_.add(kind, numberOf(line), std::move(message));
    }

    void readCue() {
        CaptionCue cue;
        if (!isTimeLine(lines_[next_])) cue.identifier = trimmed(lines_[next_++], kBlanks);
        const size_t timeLine = next_++;
        cue.line = numberOf(timeLine);
        const bool isWhole = readTimes(timeLine, cue);
        const size_t begin = next_;
        const size_t end = endOfText();
        if (!isWhole) return;
        const char* const payload = begin < end ? lines_[begin].data() : nullptr;
        const size_t length =
            begin < end ? static_cast<size_t>(lines_[end - 1].data() - payload) + lines_[end - 1].size() : 0;
        if (length > Limits::kTitleUnitsMax) {
            return report(begin,
                          "the cue has " + std::to_string(length) + " characters; " +
                              std::to_string(Limits::kTitleUnitsMax) + " is the limit; the cue is skipped",
                          CaptionProblem::notShown);
        }
        SubRipText read = textReader_.read({payload, length}, numberOf(begin));
        cue.text = annotator_.annotated(read.text);
        cue.placement = read.placement;
        sink_(std::move(cue));
    }

    bool readTimes(size_t line, CaptionCue& cue) {
        TimeLineReader times(lines_[line]);
        const std::string shown = "the time line " + quotedExcerpt(lines_[line]);
        if (!times.read(cue)) {
            report(line, shown + " is not written as 00:01:02,500 --> 00:01:04,000; the cue is skipped",
                   CaptionProblem::notShown);
            return false;
        }
        if (!times.isUsual()) report(line, shown + " is read as " + written(cue.start) + " --> " + written(cue.end));
        if (!times.rest().empty())
            problems_.addOnce(CaptionProblem::notShown, numberOf(line),
                              quotedExcerpt(times.rest()) + " after the times is ignored", "behind the times");
        if (cue.end < cue.start) {
            report(line, "the cue ends before it starts; it is kept with no duration");
            cue.end = cue.start;
        }
        return true;
    }

    // Advances to the next cue and returns the end of the text, without following blank lines.
    size_t endOfText() {
        size_t end = next_;
        bool isTold = false;
        for (; next_ < lines_.size() && !isCueStart(next_); ++next_) {
            if (isBlank(next_)) continue;
            if (!isTold && next_ > end) {
                report(next_, quotedExcerpt(lines_[next_]) + " follows a blank line; it is kept with the cue above");
                isTold = true;
            }
            end = next_ + 1;
        }
        return end;
    }

    void skipStrayLines() {
        report(next_,
               quotedExcerpt(lines_[next_]) + " belongs to no cue, since no time line is above it; it is skipped",
               CaptionProblem::notShown);
        while (next_ < lines_.size() && !isCueStart(next_)) ++next_;
    }

    const CueSink& sink_;
    CaptionProblems& problems_;
    CueAnnotator annotator_;
    SubRipTextReader textReader_;
    std::vector<std::string_view> lines_;
    size_t next_ = 0;
};

}  // namespace

bool beginsAsSubRip(std::string_view bytes) {
    bytes = withoutMark(bytes);
    bytes.remove_prefix(std::min(bytes.find_first_not_of(" \t\r\n"), bytes.size()));
    const auto lineOf = [&] { return trimmed(bytes.substr(0, bytes.find('\n')), " \t\r"); };
    if (isNumber(lineOf())) bytes.remove_prefix(std::min(bytes.find('\n'), bytes.size() - 1) + 1);
    return isTimeLine(lineOf());
}

std::optional<CaptionFile> readSubRip(const NSData& file, const CueNames& names, const CueSink& sink,
                                      CaptionProblem* error) {
    CaptionProblems problems;
    const std::optional<std::string> text = unicodeTextOfFile(file, problems, error);
    if (!text) return {};
    FileReader(withLineFeeds(*text), names, problems, sink).read();
    CaptionFile captions;
    captions.problems = problems.take();
    return captions;
}

}  // namespace qz
