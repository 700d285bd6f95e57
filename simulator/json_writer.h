// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_JSON_WRITER_H
#define KORVO_SIMULATOR_JSON_WRITER_H

#include <charconv>
#include <cstdint>
#include <iterator>
#include <string>
#include <string_view>
#include <type_traits>

namespace simulator {

/// Writes one JSON object, member by member, to the end of a text. Names are written as they are: they come from the
/// operation table and need no escapes. Texts must be valid UTF-8.
///
/// Responses are written without a document in between: a list of 256 numbers costs no allocation.
class JsonWriter {
  public:
    /// Opens the object. `out` must outlive the writer.
    explicit JsonWriter(std::string &out) : out_(out) { out_ += '{'; }

    void number(std::string_view name, std::uint32_t value);
    void flag(std::string_view name, bool value);
    void text(std::string_view name, std::string_view value);

    /// An array of what `get` makes of each element of `range`: a std::uint32_t, or a text.
    template <typename Range, typename Get>
    void list(std::string_view name, Range const &range, Get get) {
        member(name);
        out_ += '[';
        std::size_t const start = out_.size();
        if constexpr (std::is_convertible_v<decltype(get(*std::begin(range))), std::uint32_t>) {
            // Room for all of them at once: lists of numbers are the longest responses there are.
            out_.resize(start + std::size(range) * (most_digits + 1));
            char *end = out_.data() + start;
            for (auto const &element : range) {
                end = std::to_chars(end, end + most_digits, static_cast<std::uint32_t>(get(element))).ptr;
                *end++ = ',';
            }
            out_.resize(static_cast<std::size_t>(end - out_.data()));
        } else {
            for (auto const &element : range) {
                append(get(element));
                out_ += ',';
            }
        }
        if (out_.size() != start) {
            out_.pop_back();
        }
        out_ += ']';
    }
    template <typename Range>
    void list(std::string_view name, Range const &range) {
        list(
            name, range, [](auto const &element) -> auto const & { return element; });
    }

    /// Closes the object. Nothing may be added behind it.
    void close() { out_ += '}'; }

  private:
    /// Of a std::uint32_t.
    static constexpr std::size_t most_digits = 10;

    void member(std::string_view name);
    void append(std::uint32_t value);
    void append(std::string_view value);

    std::string &out_;
    bool first_ = true;
};

}  // namespace simulator

#endif
