// SPDX-License-Identifier: Apache-2.0
#include "base/guarded_call.h"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>

namespace {

struct Thrown {
    char const *name;
    std::function<void()> fail;
    korvo_core_status status;
    char const *told;
};

Thrown const thrown[] = {
    {"no memory", [] { throw std::bad_alloc(); }, KORVO_CORE_STATUS_ALLOC_FAILED, ""},
    {"a file",
     [] { throw std::filesystem::filesystem_error("no file", std::make_error_code(std::errc::io_error)); },
     KORVO_CORE_STATUS_INTERNAL_EXCEPTION_CAUGHT, "the function failed: filesystem error: no file"},
    {"the system",
     [] { throw std::system_error(std::make_error_code(std::errc::too_many_files_open), "no socket"); },
     KORVO_CORE_STATUS_IPC_FAILED, "the function failed: no socket: Too many open files"},
    {"another exception", [] { throw std::runtime_error("no reason"); },
     KORVO_CORE_STATUS_INTERNAL_EXCEPTION_CAUGHT, "the function failed: no reason"},
    {"no exception", [] { throw 1; }, KORVO_CORE_STATUS_INTERNAL_EXCEPTION_CAUGHT,
     "the function failed: something that is no exception was thrown"},
};

}  // namespace

TEST(GuardedCall, GivesWhatTheCallGives) {
    for (korvo_core_status const status :
         {KORVO_CORE_STATUS_NO_ERROR, KORVO_CORE_STATUS_SETTING_NOT_PRESENT}) {
        EXPECT_EQ(platform::guardedCall("the function", [&] { return status; }), status);
    }
}

TEST(GuardedCall, MakesAStatusOfWhatIsThrownAndTellsIt) {
    for (Thrown const &sample : thrown) {
        testing::internal::CaptureStderr();
        EXPECT_EQ(platform::guardedCall("the function",
                                        [&]() -> korvo_core_status {
                                            sample.fail();
                                            return KORVO_CORE_STATUS_NO_ERROR;
                                        }),
                  sample.status)
            << sample.name;
        std::string const log = testing::internal::GetCapturedStderr();
        EXPECT_NE(log.find(sample.told), std::string::npos) << sample.name << ": " << log;
        EXPECT_EQ(log.empty(), std::string(sample.told).empty()) << log;
    }
}
