// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_END_TO_END_WORKLOAD_H
#define KORVO_TESTS_END_TO_END_WORKLOAD_H

#include <vector>

#include "support/automation.h"
#include "support/client.h"

namespace end_to_end {

/// Calls from many threads at once: synchronous ones, two-step ones that are received in another order than they were
/// sent, and asynchronous ones, while events arrive. Each thread checks that what it gets is what it has asked for.
/// Thread n uses the nth client, and again the first one when there are no more. Each round fires `automation` once, and
/// waits when a recorder is far behind: the messaging keeps so many events and no more.
/// Afterwards everything that the threads made has been deleted, and every callback has been called exactly once.
void callFromThreads(std::vector<Client const *> const &clients, unsigned int threads, unsigned int rounds,
                     Automation const &automation, std::vector<EventRecorder const *> const &recorders = {});

}  // namespace end_to_end

#endif
