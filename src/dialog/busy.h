// What a user sees while a piece of work holds the one thread: from 0.3 s on, a pointer that says so, and windows that
// are redrawn when uncovered. Nothing can be pressed meanwhile, and nothing pressed then acts afterwards.
// No handler runs: the main loop stands, and only drawing is done. A box that tells of a failed step in between has a
// loop of its own and takes input as ever.
#pragma once

// As long as it lives the work goes on; one within another belongs to it. Only the toolkit's thread may use it.
class Busy {
public:
    Busy();
    ~Busy();
    Busy(const Busy&) = delete;
    Busy& operator=(const Busy&) = delete;

    // To be called between the steps of the work; does nothing where there is none, or before its 0.3 s. Throws
    // nothing.
    static void step() noexcept;
};
