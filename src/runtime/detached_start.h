// Starting a program that nobody waits for. Any thread may call this.
#pragma once

#include <string>
#include <vector>

namespace vorma {

// Starts the program arguments[0] with all of them as its argument vector; execute is execv, or execvp to search for
// it. It is nobody's child, so that it leaves no zombie whatever becomes of SIGCHLD, and ignores SIGHUP. False, with
// errno, if there is no process for it; a program that can't be executed ends quietly with 0. SIGCHLD is ignored
// afterwards, or once no other thread waits for a child of its own.
bool start_detached(std::vector<std::string> arguments, int (*execute)(const char* program, char* const arguments[]));

} // namespace vorma
