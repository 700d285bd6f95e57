// SPDX-License-Identifier: Apache-2.0
#include "tool/interruption.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdint>

#include "tool/failure.h"

namespace tool::interruption {
namespace {

/// How often; two are as good as many.
volatile std::sig_atomic_t noticed = 0;
int noticed_descriptor = -1;
bool ignored = false;
bool in_step = false;

extern "C" void noticeSignal(int) {
    int const before = errno;
    noticed = noticed == 0 ? 1 : 2;
    std::uint64_t const one = 1;
    [[maybe_unused]] auto const written = ::write(noticed_descriptor, &one, sizeof one);
    errno = before;
}

}  // namespace

void prepare() {
    noticed_descriptor = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    struct sigaction action = {};
    action.sa_handler = noticeSignal;
    action.sa_flags = SA_RESTART;
    (void)::sigaddset(&action.sa_mask, SIGINT);
    (void)::sigaddset(&action.sa_mask, SIGTERM);
    (void)::sigaction(SIGINT, &action, nullptr);
    (void)::sigaction(SIGTERM, &action, nullptr);
    // A reader of our output that is gone is an error of writing.
    (void)std::signal(SIGPIPE, SIG_IGN);
}

bool requested() {
    return noticed != 0;
}

void check() {
    if (ignored || noticed < (in_step ? 2 : 1)) {
        return;
    }
    if (in_step) {
        throw Failure(Exit::interrupted, "interrupted; the service may still do it",
                      "see what the service does");
    }
    throw Failure(Exit::interrupted, "interrupted");
}

Step::Step() {
    check();
    in_step = true;
}

Step::~Step() {
    in_step = false;
}

void ignoreFromNowOn() {
    ignored = true;
}

int descriptor() {
    return noticed_descriptor;
}

}  // namespace tool::interruption
