// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_LUA_VALUE_H
#define KORVO_LUA_VALUE_H

#include "korvo_core.h"

namespace korvo::lua {

/// One parameter or return value on its way between Lua and C.
union Value {
    double real;  // the widest, so that `{}` is zero as a whole
    unsigned int number;
    int integer;
    unsigned char flag;
    korvo_core_settings_type settings_type;
    void *pointer;  // also of callbacks
    char const *text;
    char *out_text;
    unsigned char **flags;
    unsigned int **numbers;
    int **integers;
    double **reals;
    char **texts;
};

}  // namespace korvo::lua

#endif
