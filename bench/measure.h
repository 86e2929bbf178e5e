// What the measurements at size share: processor time, and a table with a row for each operation and a column for each
// number of rows, which says where an operation grows faster than its rows do.
#pragma once

#include <algorithm>
#include <cstdio>
#include <ctime>
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

// Prints `times`, one for each of `sizes`; whether 20,000 rows cost at most 2.5 times what 10,000 cost, or next to
// nothing.
inline bool print_growth(const char* operation, const std::vector<double>& times) {
    std::printf("%-34s", operation);
    for (const double time : times) std::printf("%10.1f", time);
    const bool fits = times[4] <= 2.5 * std::max(times[3], 10.0);
    std::printf("   ms%s\n", fits ? "" : "   GROWS");
    return fits;
}

} // namespace bench
