#include <algorithm>
#include <cstdio>

#include "bench/peers/Case.h"
#include "bench/peers/OwnTitles.h"
#include "bench/peers/SampleTitles.h"

namespace qz::peers {
namespace {

constexpr size_t kPeerCount = std::size(kTitlePeers);
// For Pango + Cairo and Qt, in all title cases.
constexpr double kPathPeersBound = 0.10;
// For libass.
constexpr double kNewTextBound = 0.35;

struct Peers {
    std::vector<Frame> frames{kPeerCount, Frame(kWidth, kHeight)};
    std::vector<std::unique_ptr<TitlePeer>> list;

    Peers() {
        for (size_t i = 0; i < kPeerCount; ++i) list.push_back(titlePeer(i, kWidth, kHeight));
    }
};

/// `titleOfRound` with a negative number returns a second title for the round, drawn just before the measured one, so
/// that every peer starts from its own caches.
void compare(Peers& peers, const std::string& work, const std::function<Title(int)>& titleOfRound, int rounds,
             double libassBound, std::vector<Ratio>& ratios) {
    std::vector<std::vector<double>> times(kPeerCount);
    for (int round = 0; round < rounds; ++round) {
        const Title before = titleOfRound(-1 - round), title = titleOfRound(round);
        for (size_t i = 0; i < kPeerCount; ++i) {
            const bool slow = !times[i].empty() && times[i].front() > 333;
            if (slow && times[i].size() >= 3) continue;
            if (!slow) peers.list[i]->draw(before, peers.frames[i]);
            times[i].push_back(processorMillisecondsOf([&] { peers.list[i]->draw(title, peers.frames[i]); }));
        }
    }
    for (size_t i = 1; i < kPeerCount; ++i)
        ratios.push_back({work, kTitlePeers[0], kTitlePeers[i], median(times[0]), median(times[i]),
                          i == 1 ? libassBound : kPathPeersBound});
}

/// The two-line title with a number in its first line and a rotated second line, neither of which repeats.
Title newTitle(int round) {
    Title title = twoLineTitle();
    char number[16];
    std::snprintf(number, sizeof number, "%05d", (round + 50'000) * 7919 % 100'000);
    title.lines[0].replace(0, 5, number);
    std::string& second = title.lines[1];
    std::rotate(second.begin(), second.begin() + (round + 50'000) % static_cast<int>(second.size()), second.end());
    return title;
}

/// Reads and draws a file of captions: titles per second are the cues divided by the time.
void compareFile(std::vector<Ratio>& ratios) {
    constexpr int kCues = 300;
    std::vector<Title> titles;
    for (int i = 0; i < kCues; ++i) titles.push_back(newTitle(i));
    const auto ours = titlePeer(0, kWidth, kHeight), libass = titlePeer(1, kWidth, kHeight);
    Frame ourFrame(kWidth, kHeight), itsFrame(kWidth, kHeight);
    const auto playOurs = ours->captionFile(titles), playIts = libass->captionFile(titles);
    std::vector<double> ourTimes, itsTimes;
    for (int round = 0; round < 5; ++round) {
        ourTimes.push_back(processorMillisecondsOf([&] { playOurs(ourFrame); }));
        itsTimes.push_back(processorMillisecondsOf([&] { playIts(itsFrame); }));
    }
    ratios.push_back({"file of " + std::to_string(kCues) + " cues", kTitlePeers[0], kTitlePeers[1], median(ourTimes),
                      median(itsTimes), kNewTextBound});
}

}  // namespace

void titleCases(std::vector<Ratio>& ratios) {
    Peers peers;
    compare(
        peers, "same title", [](int) { return twoLineTitle(); }, 25, 0.20, ratios);
    compare(peers, "new text every frame", newTitle, 25, kNewTextBound, ratios);
    compare(
        peers, "page of 36 lines", [](int) { return pageOfLines(); }, 9, 0.25, ratios);
    compareFile(ratios);
}

void largeFrameCase(std::vector<Ratio>& ratios) {
    struct Screen {
        OwnPipeline pipeline;
        Frame frame;
        PixelRect drawn;

        Screen(int width, int height, int scale)
            : pipeline(width, height, scale), frame(width * scale, height * scale) {}
        void bitmap() {
            pipeline.setTitle(twoLineTitle());
            pipeline.screen().bitmapInFullScreen(true);
        }
        void draw() {
            frame.clear(drawn);
            pipeline.setTitle(twoLineTitle());
            pipeline.drawInto(frame, drawn);
        }
    };
    Screen small(kWidth, kHeight, 1), large(2 * kWidth, 2 * kHeight, 1), fine(kWidth, kHeight, 2);
    const auto times = interleavedMedians({
                                              [&](int) { small.bitmap(); },
                                              [&](int) { large.bitmap(); },
                                              [&](int) { small.draw(); },
                                              [&](int) { large.draw(); },
                                              [&](int) { fine.draw(); },
                                          },
                                          51);
    const std::string ours = "3840 x 2160", peer = "1920 x 1080";
    ratios.push_back({"bitmap of a screen in points", ours, peer, times[1], times[0], 1.5});
    ratios.push_back({"frame of the host's, in points", ours, peer, times[3], times[2], 1.5});
    // The same points at twice the scale: every letter has four times the pixels.
    ratios.push_back({"frame of the host's, two pixels a point", ours, peer, times[4], times[2], {}});
}

}  // namespace qz::peers
