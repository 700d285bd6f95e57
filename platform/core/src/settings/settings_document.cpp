// SPDX-License-Identifier: Apache-2.0
#include "settings/settings_document.h"

#include <boost/json/serialize.hpp>

#include "settings/bounds.h"
#include "settings/exact_json.h"

namespace platform {

namespace {

namespace bj = boost::json;

constexpr unsigned int format = 1;

// The objects of a file around a value: the document, its values, the entry.
constexpr std::size_t outer_depth = 3;

bj::object const &objectIn(bj::value const &value, std::string const &what) {
    if (!value.is_object()) {
        throw DamagedDocument(what + " is no object");
    }
    return value.get_object();
}

unsigned int numberIn(bj::value const &value, std::string const &what) {
    bj::error_code failure;
    auto const number = value.to_number<unsigned int>(failure);
    if (failure) {
        throw DamagedDocument(what + " is no whole number from 0 to 4294967295");
    }
    return number;
}

std::string quoted(bj::string_view text) {
    return '"' + std::string(text.data(), text.size()) + '"';
}

korvo_core_settings_type typeIn(bj::object const &members, std::string const &what) {
    bj::value const *const name = members.if_contains("type");
    if (name == nullptr || !name->is_string()) {
        throw DamagedDocument(what + " has no type");
    }
    bj::string const &text = name->get_string();
    auto const type = typeNamed({text.data(), text.size()});
    if (!type) {
        throw DamagedDocument(what + " has the type " + quoted(text) + ", which is none");
    }
    return *type;
}

Entry entryFrom(bj::value const &written, std::string const &what) {
    bj::object const &members = objectIn(written, what);
    korvo_core_settings_type const type = typeIn(members, what);
    Entry entry;
    for (auto const &member : members) {
        if (member.key() == "type") {
            continue;
        }
        bool const is_value = member.key() == "value";
        if (!is_value && member.key() != "default") {
            throw DamagedDocument(what + " has an unknown member " + quoted(member.key()));
        }
        try {
            (is_value ? entry.value : entry.fallback) = fromJson(type, member.value());
        } catch (std::invalid_argument const &fault) {
            throw DamagedDocument(quoted(member.key()) + " of " + what + " " + fault.what() +
                                  " (its type is " + std::string(nameOf(type)) + ")");
        }
    }
    if (!entry.value && !entry.fallback) {
        throw DamagedDocument(what + " has neither \"value\" nor \"default\"");
    }
    return entry;
}

void checkFormat(bj::object const &members) {
    bj::value const *const number = members.if_contains("format");
    if (number == nullptr) {
        throw DamagedDocument("it has no member \"format\"");
    }
    unsigned int const found = numberIn(*number, "\"format\"");
    if (found == 0) {
        throw DamagedDocument("\"format\" is 0");
    }
    if (found > format) {
        throw NewerDocument("it has the format " + std::to_string(found) +
                            ", and this program reads format " + std::to_string(format) +
                            "; use a newer one");
    }
}

std::map<std::string, Entry, std::less<>> entriesFrom(bj::value const &written) {
    std::map<std::string, Entry, std::less<>> entries;
    for (auto const &member : objectIn(written, "\"values\"")) {
        std::string const key(member.key().data(), member.key().size());
        if (key.find('\0') != std::string::npos) {
            throw DamagedDocument("a key holds a NUL character, where C texts end");
        }
        entries.emplace(key, entryFrom(member.value(), "key " + quoted(member.key())));
    }
    return entries;
}

std::string entryText(Entry const &entry) {
    std::string const name(nameOf(entry.type()));
    bj::object members{{"type", bj::string_view(name)}};
    if (entry.value) {
        members["value"] = toJson(*entry.value);
    }
    if (entry.fallback) {
        members["default"] = toJson(*entry.fallback);
    }
    return bj::serialize(members);
}

}  // namespace

Document documentFrom(std::string_view text) {
    bj::value written;
    if (std::string const fault = exact_json::read(text, outer_depth + limits::json_depth, written);
        !fault.empty()) {
        throw DamagedDocument(fault);
    }
    bj::object const &members = objectIn(written, "it");
    checkFormat(members);
    Document document;
    for (auto const &member : members) {
        if (member.key() == "version") {
            document.version = numberIn(member.value(), "\"version\"");
        } else if (member.key() == "previous_version") {
            document.previous_version = numberIn(member.value(), "\"previous_version\"");
        } else if (member.key() == "values") {
            document.entries = entriesFrom(member.value());
        } else if (member.key() != "format") {
            throw DamagedDocument("it has an unknown member " + quoted(member.key()));
        }
    }
    return document;
}

std::string textOf(Document const &document) {
    std::string text = "{\n  \"format\": " + std::to_string(format) +
                       ",\n  \"version\": " + std::to_string(document.version) +
                       ",\n  \"previous_version\": " + std::to_string(document.previous_version) +
                       ",\n  \"values\": {";
    char const *separator = "\n    ";
    for (auto const &[key, entry] : document.entries) {
        text += separator + bj::serialize(bj::value(bj::string_view(key))) + ": " + entryText(entry);
        separator = ",\n    ";
    }
    return text + "\n  }\n}\n";
}

}  // namespace platform
