// SPDX-License-Identifier: Apache-2.0
// Stores of every version so far, opened by this one. tests/upgrade/README.md tells what is in them.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>

#include "kept.h"
#include "support.h"

namespace simulator::tests {

using testing::ElementsAre;

TEST(Upgrade, AStoreOfVersion1IsReadChangedAndReadAgain) {
    TemporaryFolder const folder;
    std::string const path = folder / "store";
    std::filesystem::copy_file(UPGRADE_FOLDER "/store-1.db", path);
    auto bench = std::make_unique<Bench>(path);
    EXPECT_EQ(bench->respond(R"({"command":"Get_actions"})"),
              R"({"command":"Get_actions","status":0,"action_id":[1,2,3],"action_type":[2,7,9]})");
    EXPECT_EQ(bench->respond(R"({"command":"Get_triggers"})"),
              R"({"command":"Get_triggers","status":0,"trigger_id":[1,2,3],"trigger_type":[1,0,0]})");
    EXPECT_EQ(
        bench->respond(R"({"command":"Get_relay_action","action_id":3})"),
        R"({"command":"Get_relay_action","status":0,"action_name":"relay","relay_target":"gate","config_mode":2,"config_normally_closed":true,"config_repeat_cycles":0,"config_on_time_ms":500,"config_off_time_ms":4294967295})");
    EXPECT_EQ(
        bench->respond(R"({"command":"Get_action_filters","action_id":1})"),
        R"({"command":"Get_action_filters","status":0,"weekday_filters":[62],"time_filters_start":[28800],"time_filters_end":[64800]})");
    // A name with U+0000, which is refused today, is still read.
    EXPECT_EQ(bench->respond(R"({"command":"Get_wiper_action","action_id":2})"),
              R"({"command":"Get_wiper_action","status":0,"action_name":"wi\u0000per"})");
    // Nonsense from before it was refused does nothing, and the log says so.
    EXPECT_TRUE(bench->log.holds("never fires"));
    bench->advance(std::chrono::seconds(60));
    EXPECT_THAT(bench->run(), ElementsAre(1, 3));
    // Identifiers of entries that were deleted then are not given out now.
    EXPECT_EQ(bench->number(R"({"command":"Create_wiper_action","action_name":"new"})", "action_id"), 5);
    auto const after = keptBy(bench->engine);
    bench.reset();
    EXPECT_EQ(keptIn(path), after);
}

}  // namespace simulator::tests
