// Every fallible call of an operation, failed once. A program that links vorma_faults has the C library's calls and its
// allocator behind stand-ins, which pass everything on until a loop over faults is at work in their thread.
// What an operation's lambda itself allocates is a point too, and no MGErr: make arguments and results in the world.
#pragma once

#include <functional>
#include <memory>
#include <string>

template <class World>
struct Fallible {
    const char* name;
    std::function<void(World&)> run;
};
// A row of a table of them, named by its own text.
// clang-format off
#define OF(...) {#__VA_ARGS__, [](auto& w) { __VA_ARGS__; }}
// clang-format on

namespace faults {

// One run of an operation: what it works on, made anew for each fault and gone after it.
struct Run {
    std::function<void()> operation;
    std::function<void(bool done)> check;
};

void loop(const char* name, const std::function<Run()>& prepare);

// While one lives, its thread meets no faults and the leak check looks away: for what isn't ours to test, such as a
// library that stands in for another.
class Pause {
public:
    Pause();
    ~Pause();

private:
    bool armed_;
};

// The name and the number of the point that failed last, "write 7"; for a trace of one's own.
std::string last_point();

} // namespace faults

// Runs each operation with its first fallible point failing, then with its second, until it passes untouched: only that
// point, that allocation and all behind it, or a write of half its bytes with none behind it. Each time nothing but
// MGErr and MGExit may come out; check(world, done) is asked, done being false after a failure; the operation must then
// work, and check is asked once more; and with the world gone no descriptor is open and no block allocated that was not
// before.
template <class World, size_t size, class Check>
void for_each_fault(const Fallible<World> (&rows)[size], Check check) {
    for (const Fallible<World>& row : rows)
        faults::loop(row.name, [&] {
            const auto world = std::make_shared<World>();
            return faults::Run{[world, &row] { row.run(*world); }, [world, check](bool done) { check(*world, done); }};
        });
}

template <class World, size_t size>
void for_each_fault(const Fallible<World> (&rows)[size]) {
    for_each_fault(rows, [](World&, bool) {});
}
