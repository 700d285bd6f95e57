// SPDX-License-Identifier: Apache-2.0
#include "simulator/capture.h"

#include <fcntl.h>
#include <unistd.h>

#include <boost/json/object.hpp>
#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <boost/json/value.hpp>
#include <cerrno>
#include <exception>
#include <stdexcept>
#include <system_error>

#include "simulator/values.h"

namespace simulator {

namespace json = boost::json;

namespace {

/// Makes secrets null, however deep they are; true when there were some.
bool hide(json::value &value) {
    bool hidden = false;
    if (json::array *const array = value.if_array()) {
        for (json::value &element : *array) {
            hidden = hide(element) || hidden;
        }
    } else if (json::object *const object = value.if_object()) {
        for (auto &member : *object) {
            bool const is_secret =
                member.key() == json::string_view(secret_member.data(), secret_member.size());
            if (is_secret) {
                member.value() = nullptr;
            }
            hidden = is_secret || hide(member.value()) || hidden;
        }
    }
    return hidden;
}

/// Whether a text that is no JSON may still hold a secret: the name stands in it, or may, written in escapes.
bool mayHoldSecret(std::string_view text) {
    return text.find(secret_member) != std::string_view::npos || text.find("\\u") != std::string_view::npos;
}

json::value shown(std::string_view text, Capture::Secrets secrets) {
    json::string const as_it_is(text.data(), text.size());
    if (secrets == Capture::Secrets::shown) {
        return as_it_is;
    }
    json::error_code error;
    json::value value = json::parse(as_it_is, error);
    if (error) {
        return mayHoldSecret(text) ? json::value(nullptr) : json::value(as_it_is);
    }
    return hide(value) ? json::value(json::string(json::serialize(value))) : json::value(as_it_is);
}

}  // namespace

Capture::Capture(std::string const &path, Secrets secrets, Log const &log)
    : secrets_(secrets),
      log_(log),
      file_(::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600)) {
    if (file_ < 0) {
        throw std::runtime_error("cannot write the capture " + quoted(path) + ": " +
                                 std::generic_category().message(errno));
    }
}

Capture::~Capture() {
    ::close(file_);
}

std::string Capture::line(Wall time, std::string_view peer, Direction direction, std::string_view text,
                          Secrets secrets) {
    json::object const told{
        {"time", momentText(time)},
        {"peer", peer.empty() ? json::value(nullptr) : json::value(json::string(peer.data(), peer.size()))},
        {"direction", direction == Direction::to_service ? "to service" : "from service"},
        {"text", shown(text, secrets)}};
    return json::serialize(told) + "\n";
}

void Capture::note(Wall time, std::string_view peer, Direction direction, std::string_view text) noexcept {
    try {
        std::string const written = line(time, peer, direction, text, secrets_);
        failed_.with([&](bool &failed) {
            ssize_t const count = ::write(file_, written.data(), written.size());
            if (count != static_cast<ssize_t>(written.size()) && !failed) {
                failed = true;
                log_.warning("the capture lacks messages: " +
                             (count < 0 ? std::generic_category().message(errno) : "the disk is full"));
            }
        });
    } catch (std::exception const &) {
        // Memory is short; the message itself goes on.
    }
}

}  // namespace simulator
