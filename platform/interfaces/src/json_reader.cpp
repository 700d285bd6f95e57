// SPDX-License-Identifier: Apache-2.0
#include "json_reader.h"

#include <array>
#include <boost/json/basic_parser_impl.hpp>
#include <memory>
#include <utility>

#include "element_memory.h"
#include "exact_number.h"

namespace json_text {

namespace {

namespace bj = boost::json;

/// Builds the value model while the parser reads, without a document in between. A handler stops the parser
/// by setting `code`; why_ then says more than the code does.
class Builder {
  public:
    static constexpr std::size_t max_object_size = most_members;
    static constexpr std::size_t max_array_size = longest_text;
    static constexpr std::size_t max_key_size = longest_text;
    static constexpr std::size_t max_string_size = longest_text;

    explicit Builder(json::Object &root) : root_(root) {}

    std::string const &why() const { return why_; }

    bool on_document_begin(bj::error_code &) { return true; }
    bool on_document_end(bj::error_code &) { return true; }

    bool on_object_begin(bj::error_code &code) {
        if (hasTooManyContainers(code)) {
            return false;
        }
        if (depth_ == 0) {
            open({&root_, nullptr});
            return true;
        }
        json::UnknownElement *const element = put<json::Object>(code);
        if (element == nullptr) {
            return false;
        }
        open({&element->ConvertTo<json::Object>(), nullptr});
        return true;
    }

    bool on_object_end(std::size_t, bj::error_code &) {
        --depth_;
        return true;
    }

    bool on_array_begin(bj::error_code &code) {
        if (hasTooManyContainers(code)) {
            return false;
        }
        json::UnknownElement *const element = put<json::Array>(code);
        if (element == nullptr) {
            return false;
        }
        open({nullptr, &element->ConvertTo<json::Array>()});
        return true;
    }

    bool on_array_end(std::size_t, bj::error_code &) {
        --depth_;
        return true;
    }

    bool on_key_part(bj::string_view part, std::size_t, bj::error_code &) {
        key_.append(part.data(), part.size());
        return true;
    }

    bool on_key(bj::string_view part, std::size_t, bj::error_code &) {
        key_.append(part.data(), part.size());
        return true;
    }

    bool on_string_part(bj::string_view part, std::size_t, bj::error_code &) {
        text_.append(part.data(), part.size());
        return true;
    }

    bool on_string(bj::string_view part, std::size_t, bj::error_code &code) {
        text_.append(part.data(), part.size());
        return put<json::String>(code, std::exchange(text_, std::string())) != nullptr;
    }

    // Texts are whole, and so are their numbers. GCOV_EXCL_START
    bool on_number_part(bj::string_view part, bj::error_code &) {
        number_.append(part.data(), part.size());
        return true;
    }
    // GCOV_EXCL_STOP

    bool on_int64(std::int64_t number, bj::string_view, bj::error_code &code) {
        number_.clear();
        return put<json::Number>(code, static_cast<double>(number)) != nullptr;
    }

    bool on_uint64(std::uint64_t number, bj::string_view, bj::error_code &code) {
        number_.clear();
        return put<json::Number>(code, static_cast<double>(number)) != nullptr;
    }

    bool on_double(double estimate, bj::string_view part, bj::error_code &code) {
        number_.append(part.data(), part.size());
        std::optional<double> const number = platform::exactNumber(number_, estimate);
        number_.clear();
        if (!number) {
            return refuse("a number is too large", code);
        }
        return put<json::Number>(code, *number) != nullptr;
    }

    bool on_bool(bool flag, bj::error_code &code) { return put<json::Boolean>(code, flag) != nullptr; }
    bool on_null(bj::error_code &code) { return put<json::Null>(code) != nullptr; }
    // Comments are refused before. GCOV_EXCL_START
    bool on_comment_part(bj::string_view, bj::error_code &) { return true; }
    bool on_comment(bj::string_view, bj::error_code &) { return true; }
    // GCOV_EXCL_STOP

  private:
    /// The value whose members or elements are being read.
    struct Open {
        json::Object *object;
        json::Array *array;
    };

    bool refuse(std::string why, bj::error_code &code) {
        why_ = std::move(why);
        code = bj::error::extra_data;
        return false;
    }

    bool hasTooManyContainers(bj::error_code &code) {
        return ++containers_ > most_containers &&
               !refuse("it holds more than " + std::to_string(most_containers) + " arrays and objects", code);
    }

    /// Adds a T made from `value` to the innermost open value; NULL when it was refused.
    template <typename T, typename... Value>
    json::UnknownElement *put(bj::error_code &code, Value &&...value) {
        if (depth_ == 0) {
            (void)refuse("it is no object", code);
            return nullptr;
        }
        std::unique_ptr<json::UnknownElement::Imp> made(memory_.make<T>(std::forward<Value>(value)...));
        json::UnknownElement *const element = innermost().array != nullptr
                                                  ? &innermost().array->Emplace(made.get())
                                                  : putMember(made.get(), code);
        if (element != nullptr) {
            (void)made.release();
        }
        return element;
    }

    json::UnknownElement *putMember(json::UnknownElement::Imp *value, bj::error_code &code) {
        try {
            return &innermost().object->Emplace(std::exchange(key_, std::string()), value);
        } catch (json::Exception const &error) {
            (void)refuse(error.what(), code);
            return nullptr;
        }
    }

    /// The parser refuses deeper nesting before it tells of it.
    void open(Open value) { open_.at(depth_++) = value; }
    Open const &innermost() const { return open_.at(depth_ - 1); }

    json::Object &root_;
    ElementMemory memory_;
    std::array<Open, deepest_nesting + 1> open_;
    std::size_t depth_ = 0;
    std::string key_;
    std::string text_;
    std::string number_;
    std::size_t containers_ = 0;
    std::string why_;
};

}  // namespace

std::string read(std::string_view text, json::Object &object) {
    if (text.size() > longest_text) {
        return "it has more than " + std::to_string(longest_text) + " bytes";
    }
    bj::parse_options options;
    options.max_depth = deepest_nesting;
    bj::basic_parser<Builder> parser(options, object);
    bj::error_code failure;
    std::size_t const used = parser.write_some(false, text.data(), text.size(), failure);
    if (!failure && used < text.size()) {
        failure = bj::error::extra_data;
    }
    if (!failure) {
        return {};
    }
    std::string const &why = parser.handler().why();
    return (why.empty() ? failure.message() : why) + " (at byte " + std::to_string(used) + ")";
}

}  // namespace json_text
