// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TOOL_INTERRUPTION_H
#define KORVO_TOOL_INTERRUPTION_H

namespace tool {

/// SIGINT and SIGTERM, noticed between two steps, so that whatever was begun is ended or undone.
namespace interruption {

/// Before any thread is started.
void prepare();
bool requested();
/// Throws a Failure when it was requested.
void check();
/// Becomes readable when it is requested.
int descriptor();

}  // namespace interruption
}  // namespace tool

#endif
