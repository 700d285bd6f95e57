// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_CPP_LAYER_MATCHED_H
#define KORVO_TESTS_CPP_LAYER_MATCHED_H

#include "contract/expectations.h"

namespace cpp_layer {

/// With lists that belong together cut to one length, since the samples of the plain functions differ there on purpose.
Expectation matched(Expectation expected);

}  // namespace cpp_layer

#endif
