// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_INTERFACES_JSON_WRITER_H
#define KORVO_INTERFACES_JSON_WRITER_H

#include <string>

#include "json/json.h"

namespace json_text {

/// Appends the JSON text of `object` to `out`, members in their order. Numbers without a fraction are written
/// as integers, others with as many digits as give the same double again. Returns an empty text, or says in a
/// few words why there is no JSON text: a text or name that is no UTF-8, a number that is infinite or none,
/// or nesting that readers refuse. After a failure `out` holds a part.
std::string write(json::Object const &object, std::string &out);

}  // namespace json_text

#endif
