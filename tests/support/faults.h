// Every fallible call of an operation, failed once. A program that links vorma_faults has the C library's calls and its
// allocator behind stand-ins, which pass everything on until a loop over faults is at work in their thread:
//
//     struct World { TempDir dir; std::string file = dir.path("file"), text; };
//     const struct { const char* name; void (*run)(World&); } rows[] = {
//         {"ReadFileString", [](World& w) { MGFile::ReadFileString(w.file, w.text); }}, ...
//     for (const auto& row : rows)
//         for_each_fault(row.name, [] { return World(); }, row.run, [](World& w, bool done) { EXPECT_...; });
//
// What a row's lambda itself allocates is a point too, and no MGErr: make arguments and results in the setup. A test
// program may define a call itself, if it has a use of its own for it: ours gives way and counts nothing there.
#pragma once

#include <functional>
#include <memory>
#include <string>

namespace faults {

// How a point fails. Errors are EIO, ENOSPC where bytes are written, ENOMEM for allocations.
enum class Kind {
    once,        // the n-th call or allocation
    no_memory,   // the n-th allocation and all behind it
    short_write, // the n-th writing call moves half of its bytes, and the next one none
};

// One run of an operation: what it works on, made anew for each fault and gone after it.
struct Run {
    std::function<void()> operation;
    std::function<void(bool done)> check;
};

void loop(const std::string& name, const std::function<Run()>& prepare);

// While one lives, its thread meets no faults: for what isn't ours to test, such as a library that stands in for
// another.
class Pause {
public:
    Pause();
    ~Pause();
    Pause(const Pause&) = delete;
    Pause& operator=(const Pause&) = delete;

private:
    bool armed_, recording_;
};

// The name and the number of the point that failed last, "write 7"; for a trace of one's own.
std::string last_point();

} // namespace faults

// Runs operation(world) with its first fallible point failing, then with its second, until it passes untouched, in each
// of the three kinds. `setup` gives the world for each run, by value or as an owner. Each time nothing but MGErr and
// MGExit may come out; check(world, done) is asked, done being false after a failure; the operation must then work, and
// check is asked once more; and with the world gone no descriptor is open and no byte allocated that was not before.
// The number of faults is printed when the program ends.
template <class Setup, class Operation, class Check>
void for_each_fault(const std::string& name, Setup setup, Operation operation, Check check) {
    faults::loop(name, [&] {
        using World = decltype(setup());
        const std::shared_ptr<World> world(new World(setup()));
        return faults::Run{[world, &operation] { operation(*world); },
                           [world, &check](bool done) { check(*world, done); }};
    });
}

template <class Setup, class Operation>
void for_each_fault(const std::string& name, Setup setup, Operation operation) {
    for_each_fault(name, setup, operation, [](auto&, bool) {});
}
