#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace qz::peers {

/// A figure of the report: what one thing takes in units of another, measured in the same run.
struct Ratio {
    /// What is compared, and with what.
    std::string work, ours, peer;
    double oursMs, peerMs;
    /// What the ratio should not pass; none for one that is told for comparison only.
    std::optional<double> bound;

    double value() const { return oursMs / peerMs; }
    bool isWithinBound() const { return !bound || value() <= *bound; }
};

double millisecondsOf(const std::function<void()>& work);
/// The time that this process's threads spent at it, the system's work for them included: what a work of a millisecond
/// takes on a machine that others use too.
double processorMillisecondsOf(const std::function<void()>& work);
double median(std::vector<double> values);

/// Does each work in turn, round after round, so that all share the machine's good and bad moments; returns the median
/// time of each. A work that takes longer than a third of a second stays out after three rounds.
std::vector<double> interleavedMedians(const std::vector<std::function<void(int round)>>& works, int rounds);

// The cases. Each prints nothing and appends its ratios.

void titleCases(std::vector<Ratio>& ratios);
void firstFrameCase(std::vector<Ratio>& ratios);
void largeFrameCase(std::vector<Ratio>& ratios);
void filterCases(std::vector<Ratio>& ratios);
void modelCases(std::vector<Ratio>& ratios);

}  // namespace qz::peers
