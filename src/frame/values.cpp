// SPDX-License-Identifier: Apache-2.0
#include "frame/values.h"

#include <cstring>
#include <new>

using operations::Kind;
using operations::Member;

namespace {

// Whether the response may be changed decides how a member is read, and so how reading fails.
template <typename T>
T const &get(json::Object &response, char const *name) {
    return response[name].ConvertTo<T>();
}

template <typename T>
T const &get(json::Object const &response, char const *name) {
    return response[name].CastTo<T>();
}

char *copyText(std::string const &text) {
    char *const copy = strdup(text.c_str());
    if (copy == nullptr) {
        throw std::bad_alloc();
    }
    return copy;
}

template <typename Response>
korvo_core_status readValue(Response &response, Member const &member, OutPointer out) {
    switch (member.kind) {
        case Kind::number:
            *out.number = json::ToUnsigned(get<json::Number>(response, member.name).value());
            break;
        case Kind::flag:
            *out.flag = get<json::Boolean>(response, member.name).value() ? 1 : 0;
            break;
        case Kind::text:
            *out.text = copyText(get<json::String>(response, member.name).value());
            break;
        case Kind::texts:
            return convertJsonArrayToList<char>(get<json::Array>(response, member.name), out.texts);
        case Kind::numbers:
            return convertJsonArrayToList<unsigned int>(get<json::Array>(response, member.name), out.numbers);
        case Kind::none:  // GCOV_EXCL_LINE: no row has it
            break;        // GCOV_EXCL_LINE
    }
    return KORVO_CORE_STATUS_NO_ERROR;
}

}  // namespace

OutPointer Result::outPointer(Kind kind) {
    switch (kind) {
        case Kind::flag:
            return &flag;
        case Kind::text:
            return &text;
        case Kind::texts:
            return &texts.list;
        case Kind::numbers:
            return &numbers.list;
        case Kind::number:
        case Kind::none:  // GCOV_EXCL_LINE: no row has it
            break;        // GCOV_EXCL_LINE
    }
    return &number;
}

bool writeMember(json::Object &command, Member const &member, Input input) {
    switch (member.kind) {
        case Kind::number:
            command.Emplace(member.name, json::Number(input.number));
            return true;
        case Kind::flag:
            command.Emplace(member.name, json::Boolean(input.flag != 0));
            return true;
        case Kind::text:
            if (input.text == nullptr) {
                return false;
            }
            command.Emplace(member.name, json::String(input.text));
            return true;
        case Kind::texts:
            if (input.texts == nullptr) {
                return false;
            }
            command.Emplace(member.name, json::ToArray(input.texts));
            return true;
        case Kind::numbers:
            if (input.numbers == nullptr) {
                return false;
            }
            command.Emplace(member.name, json::ToArray(input.numbers));
            return true;
        case Kind::none:  // GCOV_EXCL_LINE: no row has it
            break;        // GCOV_EXCL_LINE
    }
    return true;  // GCOV_EXCL_LINE
}

korvo_core_status readMember(json::Object &response, Member const &member, OutPointer out) {
    return readValue(response, member, out);
}

korvo_core_status readMember(json::Object const &response, Member const &member, OutPointer out) {
    return readValue(response, member, out);
}
