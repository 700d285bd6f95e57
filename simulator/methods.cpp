// SPDX-License-Identifier: Apache-2.0
#include "simulator/methods.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <numeric>
#include <utility>

namespace simulator {

namespace {

using NamedMethod = std::pair<std::string_view, std::size_t>;

std::array<NamedMethod, method_count> sortedMethods() {
    std::array<NamedMethod, method_count> methods;
    for (std::size_t n = 0; n < method_count; ++n) {
        methods[n] = {methodAt(n).method, n};
    }
    std::sort(methods.begin(), methods.end());
    return methods;
}

std::string lowerCase(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return lower;
}

/// The number of characters to add, drop or replace to make one text of the other.
std::size_t editDistance(std::string_view from, std::string_view to) {
    std::vector<std::size_t> row(to.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < from.size(); ++i) {
        std::size_t diagonal = std::exchange(row[0], i + 1);
        for (std::size_t j = 0; j < to.size(); ++j) {
            std::size_t const replaced = diagonal + (from[i] == to[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({replaced, row[j] + 1, diagonal + 1});
        }
    }
    return row.back();
}

}  // namespace

std::optional<std::size_t> findMethod(std::string_view name) {
    static std::array<NamedMethod, method_count> const methods = sortedMethods();
    auto const found = std::lower_bound(
        methods.begin(), methods.end(), name,
        [](NamedMethod const &method, std::string_view wanted) { return method.first < wanted; });
    if (found == methods.end() || found->first != name) {
        return std::nullopt;
    }
    return found->second;
}

std::vector<std::string> closeMethodNames(std::string_view name) {
    constexpr std::size_t most = 3;
    std::string const wanted = lowerCase(name.substr(0, 64));
    std::vector<std::pair<std::size_t, std::string>> near;
    for (std::size_t n = 0; n < method_count; ++n) {
        std::string const method = methodAt(n).method;
        std::size_t const distance = editDistance(wanted, lowerCase(method));
        if (distance <= std::max<std::size_t>(2, method.size() / 3)) {
            near.emplace_back(distance, method);
        }
    }
    std::stable_sort(near.begin(), near.end(),
                     [](auto const &a, auto const &b) { return a.first < b.first; });
    std::vector<std::string> names;
    for (auto const &candidate : near) {
        if (names.size() < most) {
            names.push_back(candidate.second);
        }
    }
    return names;
}

}  // namespace simulator
