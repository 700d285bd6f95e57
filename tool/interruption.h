// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TOOL_INTERRUPTION_H
#define KORVO_TOOL_INTERRUPTION_H

/// SIGINT and SIGTERM, noticed between two steps, so that whatever was begun is ended or undone.
namespace tool::interruption {

/// Before any thread is started.
void prepare();
bool requested();
/// Throws a Failure when it was requested; within a Step, when it was requested twice.
void check();
/// A step that is not left half done: who interrupts it once is heard at the first check after it. A second time ends it,
/// since it may have no other end.
class Step {
  public:
    /// Checks.
    Step();
    ~Step();
    Step(Step const &) = delete;
    Step &operator=(Step const &) = delete;
};
/// For what must be ended although it was requested.
void ignoreFromNowOn();
/// Becomes readable when it is requested.
int descriptor();

}  // namespace tool::interruption

#endif
