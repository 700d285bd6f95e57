// SPDX-License-Identifier: Apache-2.0
#include "base/worker.h"

#include <pthread.h>
#include <signal.h>

#include <utility>

namespace platform {

namespace {

class AllSignalsBlocked {
  public:
    AllSignalsBlocked() {
        sigset_t all;
        (void)sigfillset(&all);
        (void)pthread_sigmask(SIG_SETMASK, &all, &before_);
    }
    ~AllSignalsBlocked() { (void)pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

    AllSignalsBlocked(AllSignalsBlocked const &) = delete;
    AllSignalsBlocked &operator=(AllSignalsBlocked const &) = delete;

  private:
    sigset_t before_;
};

}  // namespace

std::thread startWorker(char const *name, std::function<void()> work) {
    // A thread begins with the mask of the one that starts it.
    AllSignalsBlocked const blocked;
    return std::thread([name, work = std::move(work)] {
        (void)pthread_setname_np(pthread_self(), name);
        work();
    });
}

}  // namespace platform
