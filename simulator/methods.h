// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_METHODS_H
#define KORVO_SIMULATOR_METHODS_H

#include <cstddef>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "operations/operations.h"

namespace simulator {

/// The methods that the service answers: the operations in the order of their table, then the version query.
inline constexpr std::size_t version_query_method = std::size(operations::all);
inline constexpr std::size_t method_count = version_query_method + 1;

constexpr operations::Operation const &methodAt(std::size_t method) {
    return method == version_query_method ? operations::version_query : operations::all[method];
}

/// The method of this wire name.
std::optional<std::size_t> findMethod(std::string_view name);

/// Up to three wire names that somebody who wrote `name` may have meant, the closest first.
std::vector<std::string> closeMethodNames(std::string_view name);

}  // namespace simulator

#endif
