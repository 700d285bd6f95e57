// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_TORTURE_SERVICE_CHILD_H
#define KORVO_TESTS_TORTURE_SERVICE_CHILD_H

#include <gtest/gtest.h>

#include <csignal>
#include <memory>
#include <utility>

#include "processes/child.h"
#include "support/workspace.h"

namespace torture {

/// The service as a process whose start may fail, with a state folder of its own. Where it must not, there is
/// end_to_end::Service.
inline std::unique_ptr<processes::Child> startService(processes::Command command) {
    command.environment = {
        {"KORVO_STATE_DIR", end_to_end::Workspace::ofThisProgram().newFolder("state").string()}};
    return std::make_unique<processes::Child>(command);
}

inline bool isReady(processes::Child const &service) {
    return service.out().waitFor("korvo-action-engine-simulator: ready");
}

/// It ends when it is told to, and in good order.
inline void stopService(processes::Child &service) {
    service.signal(SIGTERM);
    auto const exit = service.wait();
    ASSERT_TRUE(exit.has_value()) << "it does not end";
    EXPECT_EQ(*exit, processes::exited(0)) << service.errors().text();
}

}  // namespace torture

#endif
