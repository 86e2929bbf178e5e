// One row of a comparison with the best public baseline.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <limits>
#include <vector>

[[noreturn]] inline void give_up(const char* what) {
    std::perror(what);
    std::exit(1);
}

// Of the processor, all threads together: what other processes take meanwhile doesn't count.
template <class Step>
double seconds(Step&& step) {
    const std::clock_t begin = std::clock();
    step();
    return static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
}

// Runs the two in turn and prints a row of the table: the least time of each, their ratio, and the ratio that is
// wanted.
template <class Ours, class Baseline>
void compare(const char* name, double aim, Ours&& ours, Baseline&& baseline) {
    constexpr int turns = 11;
    double our_time = std::numeric_limits<double>::max(), baseline_time = our_time;
    for (int turn = 0; turn < turns; ++turn) {
        our_time = std::min(our_time, seconds(ours));
        baseline_time = std::min(baseline_time, seconds(baseline));
    }
    std::printf("| %-52s | %9.2f | %9.2f | %6.2f | %5.2f |\n", name, our_time * 1e3, baseline_time * 1e3,
                our_time / baseline_time, aim);
    std::fflush(stdout);
}

// Takes what is reckoned for its time alone.
template <class Value>
void keep(const Value& value) {
    asm volatile("" : : "r"(&value) : "memory");
}

inline std::vector<uint8_t> some_bytes(size_t size) {
    std::vector<uint8_t> data(size);
    uint32_t state = 1;
    for (uint8_t& byte : data) byte = static_cast<uint8_t>((state = state * 1664525 + 1013904223) >> 24);
    return data;
}
