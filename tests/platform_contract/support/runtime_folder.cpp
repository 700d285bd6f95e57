// SPDX-License-Identifier: Apache-2.0
#include "support/runtime_folder.h"

TestRuntimeFolder::TestRuntimeFolder() : variable_("KORVO_RUNTIME_DIR", folder_.path()) {}
