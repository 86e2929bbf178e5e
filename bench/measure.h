// What the measurements at size share: processor time, and a table with a row for each operation and a column for each
// number of rows, which says where an operation grows faster than its rows do.
#pragma once

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <iterator>
#include <vector>

namespace bench {

constexpr int sizes[] = {0, 10, 1000, 10000, 20000, 100000};

// Of this process, in milliseconds.
inline double processor_time() {
    timespec time;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

inline double median(std::vector<double> times) {
    std::nth_element(times.begin(), times.begin() + static_cast<long>(times.size() / 2), times.end());
    return times[times.size() / 2];
}

inline void print_head(const char* title) {
    std::printf("%-34s", title);
    for (const int size : sizes) std::printf("%10d", size);
    std::printf("   rows\n");
}

// Prints the least of `times`, which hold one for each of `sizes`, turn after turn; whether twice the rows cost at most
// 2.5 times as much, from 10,000 to 100,000 of them: that is 21 times. What costs next to nothing may jump.
inline bool print_growth(const char* operation, const std::vector<double>& times) {
    constexpr size_t count = std::size(sizes);
    std::vector<double> least(times.begin(), times.begin() + count);
    for (size_t i = count; i < times.size(); ++i) least[i % count] = std::min(least[i % count], times[i]);
    std::printf("%-34s", operation);
    for (const double time : least) std::printf("%10.1f", time);
    const bool fits = least[5] <= 21 * std::max(least[3], 20.0);
    std::printf("   ms%s\n", fits ? "" : "   GROWS");
    return fits;
}

} // namespace bench
