// SPDX-License-Identifier: Apache-2.0
#include "tool/failure.h"

namespace tool {

std::array<ExitRow, 10> const &exitRows() {
    static constexpr std::array<ExitRow, 10> rows = {{
        {Exit::done, "done", "Done. Also when the reader of a pipe has gone."},
        {Exit::other, "other", "Something else, as a broken answer or a full disk."},
        {Exit::usage, "usage", "The command line, or what a file holds, is wrong."},
        {Exit::time_out, "time-out", "No answer in time; the service may still do it."},
        {Exit::no_service, "no service", "The service is not there, or went away."},
        {Exit::refused, "refused", "The service knows the operation and refused it."},
        {Exit::no_such_identifier, "no such identifier", "There is no such action or trigger."},
        {Exit::version, "version",
         "The service does not know the operation, or is not of the version asked for."},
        {Exit::not_permitted, "not permitted",
         "The runtime folder is not the user's own, or others can write to it."},
        {Exit::interrupted, "interrupted", "SIGINT or SIGTERM."},
    }};
    return rows;
}

char const *nameOf(Exit code) {
    for (ExitRow const &row : exitRows()) {
        if (row.code == code) {
            return row.name;
        }
    }
    return "other";
}

}  // namespace tool
