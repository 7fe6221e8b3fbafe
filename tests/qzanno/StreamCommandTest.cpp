#include <cstring>
#include <sstream>

#include <gmock/gmock.h>

#include "tests/qzanno/Tool.h"

namespace qz {
namespace {

using namespace test;
using testing::HasSubstr;
using testing::IsEmpty;

class StreamTest : public ToolTest {
protected:
    static constexpr size_t kFrameBytes = size_t{320} * 180 * 4;
    const std::string size = " -s 1280x720 -d 320x180 ";

    // One letter a frame: "." for a clear one, and the same letter for the same picture.
    static std::string lettersOf(const std::string& frames) {
        std::vector<std::string> seen = {std::string(kFrameBytes, '\0')};
        std::string letters;
        for (size_t at = 0; at < frames.size(); at += kFrameBytes) {
            const std::string frame = frames.substr(at, kFrameBytes);
            size_t i = 0;
            while (i < seen.size() && seen[i] != frame) ++i;
            if (i == seen.size()) seen.push_back(frame);
            letters += i == 0 ? '.' : static_cast<char>('a' + i - 1);
        }
        return letters;
    }

    static uint8_t byte(const std::string& bytes, size_t i) { return static_cast<uint8_t>(bytes[i]); }
};

TEST_F(StreamTest, CaptionsAreShownFromTheirFirstFrameToTheirLast) {
    write("c.srt",
          "00:00:00,200 --> 00:00:00,500\nOne\n\n00:00:00,500 --> 00:00:00,610\nTwo\n\n"
          "00:00:00,900 --> 00:00:01,200\n{\\an8}One\n\n00:00:01,000 --> 00:00:01,100\nTwo\n\n");
    const struct {
        const char *arguments, *frames, *reason;
    } cases[] = {
        {"--fps 10", "..aaabb..cdc", "0.61 s is past the beginning of frame 6"},
        {"--fps 10 --duration 0.35", "..aa", "cut"},
        {"--fps 10 --duration 1.4", "..aaabb..cdc..", "and clear to its end"},
        {"--fps 5", ".aab.c", "the frame at 1 s shows two"},
        {"--fps 10 --start 0.3 --end 1.05", "aabb..cd", "frames 3 to 10"},
        {"--fps 10 --start 0.3 --duration 0.75", "aabb..cd", "the same"},
        {"--fps 10 --offset -0.3 --duration 0.5", "aabb.", "the first begins before the film"},
        {"--fps 10 --offset 0.1 --end 0:00:00.5", "...aa", "later than the file says"},
        {"--fps 10 --start 1 --end 0:01", "", "nothing between"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.arguments);
        const ToolResult result = run("stream c.srt " + (c.arguments + size));
        EXPECT_EQ(result.exitCode, 0);
        EXPECT_EQ(result.err.empty(), *c.frames != 0);
        ASSERT_EQ(result.out.size() % kFrameBytes, 0u);
        EXPECT_EQ(lettersOf(result.out), c.frames) << c.reason;
    }
    // 900 frames at 30000/1001 per second last 30.03 s, so a cue at 30.03 s begins exactly in frame 900.
    write("late.srt", "00:00:30,030 --> 00:00:30,090\nOne\n");
    const ToolResult late = run("stream late.srt --fps 30000/1001 --changes" + size);
    EXPECT_THAT(late.out, HasSubstr("FRAME 900 30030000 "));
    EXPECT_THAT(late.out, HasSubstr("END 902\n"));
}

TEST_F(StreamTest, ChangesMakeUpTheWholeStream) {
    write("c.vtt", "WEBVTT\n\n00:00.200 --> 00:00.500\nOne\n\n00:00.400 --> 00:00.800 line:0\nTwo\n");
    const ToolResult whole = run("stream c.vtt --fps 25 --duration 1" + size);
    ASSERT_EQ(whole.out.size(), 25 * kFrameBytes);
    std::istringstream changes(run("stream c.vtt --fps 25 --duration 1 --changes" + size).out);
    std::string line;
    std::getline(changes, line);
    EXPECT_EQ(line, "QZANNO-FRAMES 1 320 180 25/1 straight");
    std::string rebuilt;
    std::string frame;
    int records = 0;
    while (std::getline(changes, line)) {
        std::istringstream words(line);
        std::string word;
        size_t number = 0;
        words >> word >> number;
        while (rebuilt.size() < number * kFrameBytes) rebuilt += frame;
        if (word == "END") break;
        size_t microseconds = 0;
        size_t bytes = 0;
        words >> microseconds >> bytes;
        ASSERT_EQ(word, "FRAME");
        EXPECT_EQ(microseconds, number * 40000);
        frame.resize(bytes);
        changes.read(frame.data(), static_cast<std::streamsize>(bytes));
        ++records;
    }
    EXPECT_EQ(line, "END 25");
    EXPECT_EQ(records, 5) << "clear, One, both, Two, clear";
    EXPECT_TRUE(rebuilt == whole.out);

    const std::string premultiplied = run("stream c.vtt --fps 25 --duration 1 --alpha premultiplied" + size).out;
    ASSERT_EQ(premultiplied.size(), whole.out.size());
    int partly = 0;
    for (size_t i = 10 * kFrameBytes; i < 11 * kFrameBytes; i += 4) {
        const int alpha = byte(whole.out, i + 3);
        ASSERT_EQ(byte(premultiplied, i + 3), alpha);
        partly += alpha > 0 && alpha < 255;
        for (size_t j = i; j < i + 3; ++j) {
            EXPECT_NEAR(byte(premultiplied, j), byte(whole.out, j) * alpha / 255.0, 1.0);
        }
    }
    EXPECT_GT(partly, 100);
}

TEST_F(StreamTest, CaptionsThatAreShownTogetherDoNotCoverEachOther) {
    // The alpha of two captions drawn together adds up to that of each alone only where neither covers the other.
    const auto ink = [](const std::string& frames, size_t frame) {
        int64_t sum = 0;
        for (size_t i = 3; i < kFrameBytes; i += 4) sum += byte(frames, frame * kFrameBytes + i);
        return static_cast<double>(sum);
    };
    const struct {
        const char *first, *second, *reason;
    } cases[] = {
        {"One", "Two", "at the foot"},
        {"One\nmore", "Two", "two lines under one"},
        {"{\\an8}One", "{\\an8}Two", "at the top"},
        {"{\\an1}One", "{\\an1}Two", "at the side"},
        {"{\\an5}One", "Two", "already apart"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.reason);
        // Frames: the first, both, both, the second.
        write("c.srt", "00:00:00,000 --> 00:00:03,000\n" + std::string(c.first) +
                           "\n\n00:00:01,000 --> 00:00:04,000\n" + c.second + "\n");
        const ToolResult result = run("stream c.srt --fps 1" + size);
        EXPECT_THAT(result.err, IsEmpty());
        ASSERT_EQ(result.out.size(), 4 * kFrameBytes);
        const double both = ink(result.out, 0) + ink(result.out, 3);
        EXPECT_NEAR(ink(result.out, 1), both, both / 100);
        // The first stays where it is, and so does the second when the first has gone.
        size_t moved = 0;
        for (size_t i = 0; i < kFrameBytes; ++i) {
            const uint8_t alone = std::max(byte(result.out, i), byte(result.out, 3 * kFrameBytes + i));
            moved += byte(result.out, kFrameBytes + i) < alone / 2;
        }
        EXPECT_EQ(moved, 0u);
    }
}

TEST_F(StreamTest, WhatCannotBeStreamedIsSaid) {
    write("c.srt", "00:00:01,000 --> 00:00:02,000\nOne\n\n00:00:01,500 --> 00:00:03,000\nTwo\n");
    write("short.srt", "00:00:01,001 --> 00:00:01,010\nOne\n");
    write("t.txt", "Title");
    write("broken.mp4", "no film");
    write("numbered.srt", "1\n00:00:01,000 --> 00:00:02,000\nOne\n");
    const std::string page = "One\nTwo\nThree\nFour\nFive\nSix\nSeven\nEight\nNine\n\n";
    write("full.srt", "00:00:01,000 --> 00:00:02,000\n" + page + "00:00:01,500 --> 00:00:03,000\n" + page);
    const struct {
        const char* line;
        int exitCode;
        const char* message;
    } cases[] = {
        {"stream t.txt --fps 25", 1, "t.txt: has titles without times; give --duration"},
        {"stream c.srt --fps 0", 2, "0 is not a frame rate"},
        {"stream c.srt --fps 30000/1001x", 2, "30000/1001x is not a frame rate"},
        {"stream c.srt", 2, "--fps is required"},
        {"stream c.srt --fps 25 --start 1:60:", 2, "1:60: is not a time; write one such as 90"},
        {"stream c.srt --fps 25 --end no.mp4", 2, "no.mp4 is neither a time, such as 90.5 or 0:01:30.5, nor an existing film"},
        {"stream c.srt --fps 25 --end numbered.srt", 1, "numbered.srt: has no pictures"},
        {"stream c.srt --fps 25 --end broken.mp4", 1, "broken.mp4: cannot be read as a film: "},
        {"stream short.srt --fps 25", 0, "title 1: falls between two frames and is not shown"},
        {"stream full.srt --fps 5 >/dev/null", 0, "title 2: has no room beside the captions shown with it"},
        {"stream c.srt --fps 25 | head -c 1000 >head; true", 0, "standard output: cannot be written: Broken pipe"},
    };
    EXPECT_THAT(shell("PATH=/nowhere; \"$QZANNO\" stream c.srt --fps 25 --end c.srt").err, HasSubstr("needs ffprobe"));
    for (const auto& c : cases) {
        const ToolResult result = shell("\"$QZANNO\" " + std::string(c.line));
        EXPECT_EQ(result.exitCode, c.exitCode) << c.line;
        EXPECT_THAT(result.err, HasSubstr(c.message)) << c.line;
    }
    EXPECT_EQ(run("stream t.txt --fps 2 --duration 2" + size).out.size(), 4 * kFrameBytes);
}

// With the real ffmpeg, on the planes that it decodes. Pure red is Y 63, U 102, V 240 by the matrix of BT.709.
TEST_F(StreamTest, CaptionsKeepTheirColoursInAFilm) {
    const std::string ffmpeg = "ffmpeg -nostdin -v error -y ";
    const std::string decode = " -f rawvideo -pix_fmt yuv444p ";
    write("red.plist", paletteFile("<key>FontSize as NSNumber(float)</key><real>600</real><key>NSColor</key><dict>"
                                   "<key>Object Name</key><string>NSColor RGBCalibrated</string><key>Red</key>"
                                   "<real>1</real><key>Alpha</key><real>1</real></dict>"));
    // The last caption continues past the film's end.
    write("c.srt", "00:00:00,500 --> 00:00:01,000\n█████\n\n00:00:01,900 --> 00:01:00,000\n█████\n");
    ASSERT_EQ(shell(ffmpeg + "-f lavfi -i color=gray:size=320x180:rate=30000/1001:duration=2 -vf "
                             "scale=out_color_matrix=bt709:out_range=tv,format=yuv420p -colorspace bt709 "
                             "-color_primaries bt709 -color_trc bt709 -c:v ffv1 film.mkv")
                  .exitCode,
              0);
    const std::string captions =
        "\"$QZANNO\" stream c.srt -p red.plist --fps 30000/1001 --end film.mkv -s 1280x720 -d 320x180 ";
    const std::string frames = shell(captions).out;
    ASSERT_EQ(frames.size(), 60 * kFrameBytes) << "as long as the film";
    const std::string raw =
        "| ffmpeg -v error -y -f rawvideo -pixel_format rgba -video_size 320x180 -framerate 30000/1001 -i - ";
    const std::string toBt709 =
        "scale=out_color_matrix=bt709:out_range=tv,setparams=colorspace=bt709:color_primaries=bt709:color_trc=bt709";
    const struct {
        std::string line, file;
    } cases[] = {
        {"-i film.mkv -filter_complex '[0]" + toBt709 + "[c];[1][c]overlay=eof_action=pass' -c:v ffv1 ", "burnt.mkv"},
        {"-vf " + toBt709 + " -c:v prores_ks -profile:v 4444 -pix_fmt yuva444p10le ", "track.mov"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.line);
        const ToolResult made =
            shell("{ " + captions + "; echo $? >status; } " + raw + c.line + c.file + " && " + ffmpeg + "-i " + c.file +
                  decode + "planes && " + ffmpeg + "-i " + c.file + " -f rawvideo -pix_fmt rgba pixels");
        ASSERT_EQ(made.exitCode, 0) << made.err;
        EXPECT_EQ(contentOf("status"), "0\n") << "nobody stopped reading";
        const std::string planes = contentOf("planes");
        constexpr size_t kPixels = kFrameBytes / 4;
        ASSERT_EQ(planes.size(), 60 * 3 * kPixels);
        const int expected[] = {63, 102, 240};
        const size_t middle = kPixels / 2 + 160;
        // Frame 15 is the first at half a second or later; the end at one second comes before frame 30.
        for (const size_t frame : {15u, 29u, 59u}) {
            for (size_t plane = 0; plane < 3; ++plane)
                EXPECT_NEAR(byte(planes, (frame * 3 + plane) * kPixels + middle), expected[plane], 1) << frame;
        }
        for (const size_t frame : {14u, 30u}) EXPECT_NEAR(byte(planes, (frame * 3 + 1) * kPixels + middle), 128, 1);
        const std::string pixels = contentOf("pixels");
        double difference = 0;
        for (size_t i = 3; i < frames.size(); i += 4) difference += std::abs(byte(pixels, i) - byte(frames, i));
        EXPECT_TRUE(c.file == "burnt.mkv" || difference / static_cast<double>(frames.size() / 4) < 1.0) << "the alpha";
    }
}

}  // namespace
}  // namespace qz
