#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace qz::peers {

/// A figure of the report: the time of one thing relative to another, measured in the same run.
struct Ratio {
    /// The work, and the two things compared.
    std::string work, ours, peer;
    double oursMs, peerMs;
    /// The limit of the ratio; no value if it is only for comparison.
    std::optional<double> bound;

    double value() const { return oursMs / peerMs; }
    bool isWithinBound() const { return !bound || value() <= *bound; }
};

double millisecondsOf(const std::function<void()>& work);
/// The processor time of this process's threads, including system time, which is reliable for a millisecond of work on
/// a shared machine.
double processorMillisecondsOf(const std::function<void()>& work);
double median(std::vector<double> values);

/// Runs the works in turn, round after round, so that all share the machine's good and bad moments; returns the median
/// time of each. A work that takes longer than a third of a second runs only three times.
std::vector<double> interleavedMedians(const std::vector<std::function<void(int round)>>& works, int rounds);

// The cases. Each prints nothing and appends its ratios.

void titleCases(std::vector<Ratio>& ratios);
void firstFrameCase(std::vector<Ratio>& ratios);
void largeFrameCase(std::vector<Ratio>& ratios);
void filterCases(std::vector<Ratio>& ratios);
void modelCases(std::vector<Ratio>& ratios);

}  // namespace qz::peers
