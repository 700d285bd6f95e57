// SPDX-License-Identifier: Apache-2.0
#include "tool/undo.h"

#include "tool/failure.h"
#include "tool/interruption.h"

namespace tool {

void Steps::run(std::function<void()> const &work) {
    try {
        work();
        // Also who interrupts the last step wants none of them.
        interruption::check();
    } catch (Failure const &failure) {
        std::string undone;
        std::string left;
        interruption::ignoreFromNowOn();
        for (auto step = done_.rbegin(); step != done_.rend(); ++step) {
            std::string *told = &undone;
            try {
                step->second();
            } catch (Failure const &) {
                told = &left;
            }
            *told += (told->empty() ? "" : ", ") + step->first;
        }
        std::string what = failure.what();
        if (!undone.empty()) {
            what += "; undone: " + undone;
        }
        if (!left.empty()) {
            what += "; could not be undone: " + left;
        }
        throw Failure(failure.code(), what, failure.advice(), failure.status());
    }
}

}  // namespace tool
