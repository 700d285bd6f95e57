// SPDX-License-Identifier: Apache-2.0
#include "host/flavour.h"

char const *flavour() {
    return KORVO_LUA_FLAVOUR;
}
