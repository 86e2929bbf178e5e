// A network of its own for one thread, gone with it: only the loopback at first, and that down.
#pragma once

#include "runtime/owners.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sched.h>
#include <string>

class NetNamespace {
public:
    NetNamespace() : former_(open("/proc/thread-self/ns/net", O_RDONLY | O_CLOEXEC)) {
        if (unshare(CLONE_NEWNET) != 0) refusal_ = std::string("unshare: ") + std::strerror(errno);
    }
    ~NetNamespace() {
        if (refusal_.empty()) setns(former_.get(), CLONE_NEWNET);
    }
    NetNamespace(const NetNamespace&) = delete;
    NetNamespace& operator=(const NetNamespace&) = delete;

    // Why the machine grants none, empty if it does.
    const std::string& refusal() const { return refusal_; }

private:
    FileDescriptor former_;
    std::string refusal_;
};
