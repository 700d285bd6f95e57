// SPDX-License-Identifier: Apache-2.0
#include "settings/exact_json.h"

#include <boost/json/basic_parser_impl.hpp>
#include <boost/json/serialize.hpp>
#include <boost/json/value_stack.hpp>

#include "exact_number.h"

namespace platform::exact_json {

namespace {

namespace bj = boost::json;

/// Builds a document as the library's own parser does, except that doubles are converted from their digits.
class Builder {
  public:
    // Whoever reads a file bounds its size; nothing in it is larger.
    static constexpr std::size_t max_object_size = bj::object::max_size();
    static constexpr std::size_t max_array_size = bj::array::max_size();
    static constexpr std::size_t max_key_size = bj::string::max_size();
    static constexpr std::size_t max_string_size = bj::string::max_size();

    Builder() { stack_.reset(); }

    bj::value release() { return stack_.release(); }
    std::size_t members() const { return members_; }

    bool on_document_begin(bj::error_code &) { return true; }
    bool on_document_end(bj::error_code &) { return true; }
    bool on_object_begin(bj::error_code &) { return true; }

    bool on_object_end(std::size_t members, bj::error_code &) {
        members_ += members;
        stack_.push_object(members);
        return true;
    }

    bool on_array_begin(bj::error_code &) { return true; }

    bool on_array_end(std::size_t elements, bj::error_code &) {
        stack_.push_array(elements);
        return true;
    }

    bool on_key_part(bj::string_view part, std::size_t, bj::error_code &) {
        stack_.push_chars(part);
        return true;
    }

    bool on_key(bj::string_view part, std::size_t, bj::error_code &) {
        stack_.push_key(part);
        return true;
    }

    bool on_string_part(bj::string_view part, std::size_t, bj::error_code &) {
        stack_.push_chars(part);
        return true;
    }

    bool on_string(bj::string_view part, std::size_t, bj::error_code &) {
        stack_.push_string(part);
        return true;
    }

    // Texts are whole, and so are their numbers. GCOV_EXCL_START
    bool on_number_part(bj::string_view part, bj::error_code &) {
        number_.append(part.data(), part.size());
        return true;
    }
    // GCOV_EXCL_STOP

    bool on_int64(std::int64_t number, bj::string_view, bj::error_code &) {
        number_.clear();
        stack_.push_int64(number);
        return true;
    }

    bool on_uint64(std::uint64_t number, bj::string_view, bj::error_code &) {
        number_.clear();
        stack_.push_uint64(number);
        return true;
    }

    bool on_double(double estimate, bj::string_view part, bj::error_code &code) {
        number_.append(part.data(), part.size());
        std::optional<double> const number = exactNumber(number_, estimate);
        number_.clear();
        if (!number) {
            code = bj::error::exponent_overflow;
            return false;
        }
        stack_.push_double(*number);
        return true;
    }

    bool on_bool(bool flag, bj::error_code &) {
        stack_.push_bool(flag);
        return true;
    }

    bool on_null(bj::error_code &) {
        stack_.push_null();
        return true;
    }

    // Comments are refused before. GCOV_EXCL_START
    bool on_comment_part(bj::string_view, bj::error_code &) { return true; }
    bool on_comment(bj::string_view, bj::error_code &) { return true; }
    // GCOV_EXCL_STOP

  private:
    bj::value_stack stack_;
    std::string number_;
    std::size_t members_ = 0;
};

/// The members of all objects in `value`.
std::size_t countMembers(bj::value const &value) {
    std::size_t count = 0;
    if (auto const *const object = value.if_object()) {
        count = object->size();
        for (auto const &member : *object) {
            count += countMembers(member.value());
        }
    } else if (auto const *const array = value.if_array()) {
        for (bj::value const &element : *array) {
            count += countMembers(element);
        }
    }
    return count;
}

}  // namespace

std::string read(std::string_view text, std::size_t depth, bj::value &value) {
    bj::parse_options options;
    options.max_depth = depth;
    bj::basic_parser<Builder> parser(options);
    bj::error_code failure;
    std::size_t const used = parser.write_some(false, text.data(), text.size(), failure);
    if (!failure && used < text.size()) {
        failure = bj::error::extra_data;
    }
    if (failure) {
        return failure.message() + " (at byte " + std::to_string(used) + ")";
    }
    std::size_t const members = parser.handler().members();
    bj::value made = parser.handler().release();
    // An object keeps one member of a name, so a name that stood twice has made the document smaller.
    if (countMembers(made) != members) {
        return "a name stands twice in an object";
    }
    value = std::move(made);
    return {};
}

bool isUtf8(std::string_view text) {
    // The writer passes bytes on as they are, and the reader is strict.
    bj::value ignored;
    return read(bj::serialize(bj::value(bj::string_view(text.data(), text.size()))), 1, ignored).empty();
}

}  // namespace platform::exact_json
