#include "bench/peers/FirstFrame.h"

#include <cstdio>
#include <fstream>
#include <stdexcept>

#include <unistd.h>

#include "bench/peers/Case.h"
#include "bench/peers/SampleTitles.h"

namespace qz::peers {
namespace {

constexpr int kRounds = 11;

/// Reads a line such as "VmHWM: 12345 kB".
long kibibytesOf(const std::string& name) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with(name + ":")) return std::stol(line.substr(name.size() + 1));
    }
    throw std::runtime_error("no " + name + " in /proc/self/status");
}

struct Measure {
    double milliseconds = 0;
    long kibibytes = 0;
};

Measure inOwnProcess(size_t peer) {
    const std::string command =
        "exec /proc/" + std::to_string(getpid()) + "/exe --first-frame " + std::to_string(peer) + " 2>/dev/null";
    FILE* output = popen(command.c_str(), "r");
    Measure measure;
    const bool read = output && std::fscanf(output, "%lf %ld", &measure.milliseconds, &measure.kibibytes) == 2;
    if (!output || pclose(output) != 0 || !read)
        throw std::runtime_error(std::string(kTitlePeers[peer]) + " drew no first frame");
    return measure;
}

}  // namespace

void drawFirstFrame(size_t peer) {
    const long before = kibibytesOf("VmRSS");
    Frame frame(kWidth, kHeight);
    const auto titles = titlePeer(peer, kWidth, kHeight);
    Title title = twoLineTitle();
    title.lines = {" "};
    titles->draw(title, frame);
    title = twoLineTitle();
    const double milliseconds = processorMillisecondsOf([&] { titles->draw(title, frame); });
    std::printf("%f %ld\n", milliseconds, kibibytesOf("VmHWM") - before);
}

void firstFrameCase(std::vector<Ratio>& ratios) {
    constexpr size_t kPeerCount = std::size(kTitlePeers);
    std::vector<std::vector<double>> times(kPeerCount), growth(kPeerCount);
    for (int round = 0; round < kRounds; ++round) {
        for (size_t i = 0; i < kPeerCount; ++i) {
            const Measure measure = inOwnProcess(i);
            times[i].push_back(measure.milliseconds);
            growth[i].push_back(static_cast<double>(measure.kibibytes) / 1024);
        }
    }
    for (size_t i = 1; i < kPeerCount; ++i)
        ratios.push_back({"first frame of a process", kTitlePeers[0], kTitlePeers[i], median(times[0]),
                          median(times[i]), i == 1 ? 0.60 : 0.10});
    for (size_t i = 0; i < kPeerCount; ++i)
        std::printf("%s: a 1920 x 1080 title grows a process by %.1f MiB at most, 7.9 of them the frame\n",
                    kTitlePeers[i], median(growth[i]));
}

}  // namespace qz::peers
