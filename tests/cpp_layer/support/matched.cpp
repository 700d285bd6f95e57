// SPDX-License-Identifier: Apache-2.0
#include "cpp_layer/support/matched.h"

#include <algorithm>
#include <string>
#include <vector>

namespace cpp_layer {

Expectation matched(Expectation expected) {
    for (std::vector<Member> *members : {&expected.inputs, &expected.results}) {
        std::vector<Member *> lists;
        std::size_t shortest = 1000;
        for (Member &member : *members) {
            std::string const name = member.name;
            bool const is_namespace = member.kind == Kind::texts && name.compare(0, 10, "namespace_") == 0;
            if (is_namespace || member.kind == Kind::numbers) {
                lists.push_back(&member);
                shortest = std::min(shortest, is_namespace ? std::get<Texts>(member.sample).size()
                                                           : std::get<Numbers>(member.sample).size());
            }
        }
        for (Member *const list : lists) {
            if (list->kind == Kind::texts) {
                std::get<Texts>(list->sample).resize(shortest);
            } else {
                std::get<Numbers>(list->sample).resize(shortest);
            }
        }
    }
    return expected;
}

}  // namespace cpp_layer
