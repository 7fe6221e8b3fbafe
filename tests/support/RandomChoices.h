#pragma once

#include <cstdint>
#include <random>
#include <stdexcept>
#include <string>

namespace qz::test {

/// Random choices for the checks shared with fuzzers. Throws, with the seed, if a check fails.
class RandomChoices {
public:
    explicit RandomChoices(uint32_t seed) : seed_(seed), random_(seed) {}

    template <class Integer>
    Integer ConsumeIntegralInRange(Integer least, Integer greatest) {
        return std::uniform_int_distribution<Integer>(least, greatest)(random_);
    }
    template <class Integer>
    Integer ConsumeIntegral() {
        return static_cast<Integer>(random_());
    }
    bool ConsumeBool() { return random_() % 2 != 0; }
    template <class Value>
    Value PickValueInArray(std::initializer_list<Value> values) {
        return values.begin()[random_() % values.size()];
    }

    void require(bool holds, const char* what) const {
        if (!holds) throw std::runtime_error("does not hold with seed " + std::to_string(seed_) + ": " + what);
    }

private:
    const uint32_t seed_;
    std::mt19937 random_;
};

}  // namespace qz::test
