/* SPDX-License-Identifier: Apache-2.0 */
/* Compiles the public header with nothing before it, as strict C. */
#include "korvo_api_action_engine.h"
