// SPDX-License-Identifier: Apache-2.0
// The two platform libraries of a process can be exchanged, whole or function by function, without the client library
// noticing.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "processes/child.h"
#include "support/service.h"

namespace end_to_end {

namespace {

/// A preloaded library comes before a sanitizer's own, which it does not like to be; it is told not to mind.
constexpr char const *sanitizer_options = "verify_asan_link_order=0";

Finished probeWith(std::vector<std::pair<std::string, std::string>> environment) {
    environment.emplace_back("ASAN_OPTIONS", sanitizer_options);
    Finished probed = run({KORVO_PROBE_PROGRAM, {}, std::move(environment)});
    EXPECT_TRUE(probed.exit == exited(0)) << probed.errors;
    return probed;
}

bool has(std::string const &text, std::string const &part) {
    return text.find(part) != std::string::npos;
}

/// The library that a function is from, without its folder.
std::string originOf(Finished const &probed, std::string const &function) {
    auto const begin = probed.out.find(function + " from ");
    if (begin == std::string::npos) {
        return "";
    }
    return probed.out.substr(begin, probed.out.find('\n', begin) - begin).substr(function.size() + 6);
}

TEST(PlatformLibraries, AreTheDevelopmentPlatformsByThemselves) {
    Service const service;
    Finished const probed = probeWith({});
    EXPECT_TRUE(has(originOf(probed, "korvo_core_ipc_initiator_init"), "libkorvo-core.so.1")) << probed.out;
    EXPECT_FALSE(has(probed.out, KORVO_FAKE_PLATFORM_FOLDER)) << probed.out;
    EXPECT_TRUE(has(probed.out, "init 0\ncounts 0\ncreate 0\nget 0\n")) << probed.out;
}

TEST(PlatformLibraries, AreExchangedByTheLibraryPath) {
    Service const service;
    Finished const probed = probeWith({{"LD_LIBRARY_PATH", KORVO_FAKE_PLATFORM_FOLDER}});
    EXPECT_TRUE(has(originOf(probed, "korvo_core_ipc_initiator_init"), KORVO_FAKE_PLATFORM_FOLDER))
        << probed.out;
    EXPECT_TRUE(has(originOf(probed, "_Z18convertJsonToValueRKN4json14UnknownElementEPPc"),
                    std::string(KORVO_FAKE_PLATFORM_FOLDER) + "/libkorvo-interfaces.so"))
        << probed.out;
    EXPECT_TRUE(
        has(originOf(probed, "korvo_api_action_engine_initiator_init"), "libkorvo-api-action-engine.so.2"))
        << probed.out;
    // The stand-in opens handles like any platform, and carries nothing to the service that runs.
    EXPECT_TRUE(has(probed.out, "init 0\n")) << probed.out;
    EXPECT_FALSE(has(probed.out, "counts 0")) << probed.out;
}

TEST(PlatformLibraries, GiveWayToAPreloadedFunctionOfTheCore) {
    Service const service;
    Finished const probed = probeWith({{"LD_PRELOAD", KORVO_STAND_IN_CORE}});
    EXPECT_EQ(originOf(probed, "korvo_core_ipc_initiator_event_subscribe"), KORVO_STAND_IN_CORE)
        << probed.out;
    EXPECT_TRUE(has(originOf(probed, "korvo_core_ipc_initiator_init"), "libkorvo-core.so.1")) << probed.out;
    EXPECT_TRUE(has(probed.out, "init 2\n")) << probed.out;
    EXPECT_TRUE(has(probed.errors, "initializeEventStructures:failed call to subscribe to events"))
        << probed.errors;
}

TEST(PlatformLibraries, GiveWayToAPreloadedFunctionOfTheInterfaces) {
    Service const service;
    Finished const probed = probeWith({{"LD_PRELOAD", KORVO_STAND_IN_INTERFACES}});
    EXPECT_EQ(originOf(probed, "_Z18convertJsonToValueRKN4json14UnknownElementEPPc"),
              KORVO_STAND_IN_INTERFACES)
        << probed.out;
    EXPECT_TRUE(has(probed.out, "init 0\ncounts 0\ncreate 0\nget 6\n")) << probed.out;
    EXPECT_TRUE(has(probed.errors, "action_engine_get_email_action_receive:failed converting STR array (6)"))
        << probed.errors;
}

}  // namespace

}  // namespace end_to_end
