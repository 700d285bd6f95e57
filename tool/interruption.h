// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TOOL_INTERRUPTION_H
#define KORVO_TOOL_INTERRUPTION_H

/// SIGINT and SIGTERM, noticed between two steps, so that whatever was begun is ended or undone.
namespace tool::interruption {

/// Before any thread is started.
void prepare();
bool requested();
/// Throws a Failure when it was requested.
void check();
/// For what must be ended although it was requested.
void ignoreFromNowOn();
/// Becomes readable when it is requested.
int descriptor();

}  // namespace tool::interruption

#endif
