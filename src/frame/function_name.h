// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_FRAME_FUNCTION_NAME_H
#define KORVO_FRAME_FUNCTION_NAME_H

#include <cstdio>

#include "operations/operation.h"

/// The name of an operation's member function, for log lines. Made without allocating, since a handler of
/// exceptions logs it too.
class FunctionName {
  public:
    static FunctionName requestBuilder(operations::Operation const &operation) {
        return FunctionName("action_engine_", operation.name, "_utility_send");
    }
    static FunctionName responseReader(operations::Operation const &operation) {
        return FunctionName("action_engine_", operation.name, "_receive");
    }
    static FunctionName responseCallback(operations::Operation const &operation) {
        return FunctionName("action_engine", operation.method, "Callback");
    }

    char const *c_str() const { return text_; }

  private:
    FunctionName(char const *prefix, char const *name, char const *suffix) {
        std::snprintf(text_, sizeof text_, "%s%s%s", prefix, name, suffix);
    }

    char text_[96];
};

#endif
