// SPDX-License-Identifier: Apache-2.0
#include "tool/failure.h"

namespace tool {

char const *nameOf(Exit code) {
    switch (code) {
        case Exit::done:
            return "done";
        case Exit::usage:
            return "usage";
        case Exit::time_out:
            return "time-out";
        case Exit::no_service:
            return "no service";
        case Exit::refused:
            return "refused";
        case Exit::no_such_identifier:
            return "no such identifier";
        case Exit::version:
            return "version";
        case Exit::not_permitted:
            return "not permitted";
        case Exit::interrupted:
            return "interrupted";
        case Exit::other:
            break;
    }
    return "other";
}

}  // namespace tool
