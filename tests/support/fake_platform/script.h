// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_FAKE_PLATFORM_SCRIPT_H
#define KORVO_TESTS_FAKE_PLATFORM_SCRIPT_H

// What the two fake libraries share behind fake_platform.h.

#include <string>

#include "fake_platform/fake_platform.h"

namespace fake_platform {

FAKE_PLATFORM_EXPORT bool scripted();

/// Does the libkorvo-interfaces that is played ask objects whether a command is asynchronous?
FAKE_PLATFORM_EXPORT bool asks();

/// Records the call and ends it as arranged: throws, or returns the arranged status. Empty when nothing is
/// arranged.
FAKE_PLATFORM_EXPORT std::optional<korvo_core_status> enter(Call const &call);

/// Throws what is arranged, if anything.
void raise(Throw what);

/// See core_calls.h.
void endRecordingOfCore();

FAKE_PLATFORM_EXPORT void record(LogLine const &line);

/// Takes what is to run at the next closing; empty when there is nothing.
FAKE_PLATFORM_EXPORT std::function<void()> takeClosingAction();

/// Takes the response that was lined up first.
FAKE_PLATFORM_EXPORT bool takeResponse(json::Object &response);

/// Messages that a test delivers travel as texts that stand for objects, so that objects which no JSON text
/// can express (a number that is no number) travel too.
FAKE_PLATFORM_EXPORT std::string textFor(json::Object const &message);
FAKE_PLATFORM_EXPORT bool objectOf(std::string const &text, json::Object &message);

}  // namespace fake_platform

#endif
