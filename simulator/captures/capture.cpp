// SPDX-License-Identifier: Apache-2.0
#include "simulator/captures/capture.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <boost/json/object.hpp>
#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <boost/json/value.hpp>
#include <cerrno>
#include <exception>
#include <stdexcept>
#include <system_error>

#include "simulator/values.h"
#include "visible_text.h"

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

/// JSON holds nothing else.
json::string utf8(std::string_view text) {
    json::string valid;
    while (!text.empty()) {
        std::size_t const bytes = platform::visible_text::firstOf(text).bytes;
        if (bytes == 0) {
            valid.append("\xef\xbf\xbd");
        } else {
            valid.append(text.data(), text.data() + bytes);
        }
        text.remove_prefix(std::max<std::size_t>(bytes, 1));
    }
    return valid;
}

json::value shown(std::string_view text, Capture::Secrets secrets) {
    json::string const as_it_is = utf8(text);
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

Capture::Capture(std::string const &path, Secrets secrets, Existing existing, Log const &log)
    : secrets_(secrets),
      log_(log),
      file_(::open(path.c_str(),
                   O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | (existing == Existing::refused ? O_EXCL : 0),
                   0600)) {
    if (file_ < 0) {
        throw std::runtime_error("cannot write the capture " + quoted(path) + ": " +
                                 std::generic_category().message(errno));
    }
    // What is added to may be older than what it holds from now on.
    struct stat found = {};
    if (::fstat(file_, &found) == 0 && S_ISREG(found.st_mode) && (found.st_mode & 077) != 0) {
        if (::fchmod(file_, 0600) != 0) {
            int const reason = errno;
            ::close(file_);
            throw std::runtime_error(
                "others can read the capture " + quoted(path) +
                ", and its mode cannot be set: " + std::generic_category().message(reason));
        }
        log_.notice("others could read or change the capture " + quoted(path) + "; it has mode 0600 now");
    }
}

Capture::~Capture() {
    ::close(file_);
}

std::string Capture::line(Wall time, Message const &message, Secrets secrets) {
    auto const told = [](std::string_view text) {
        return text.empty() ? json::value(nullptr) : json::value(json::string(text.data(), text.size()));
    };
    json::object const line{
        {"time", preciseMomentText(time)},
        {"peer", told(message.peer)},
        {"request", told(message.request)},
        {"direction", message.direction == Direction::to_service ? to_service_text : from_service_text},
        {"text", shown(message.text, secrets)}};
    return json::serialize(line) + "\n";
}

void Capture::note(Wall time, Message const &message) noexcept {
    try {
        std::string const text = line(time, message, secrets_);
        written_.with([&](Written &written) {
            ssize_t const size = ::write(file_, text.data(), text.size());
            if (size == static_cast<ssize_t>(text.size())) {
                ++written.count;
                return;
            }
            int const reason = size < 0 ? errno : ENOSPC;
            if (size > 0) {
                // The beginning of a line would spoil the next one, and with it the whole capture.
                (void)!::ftruncate(file_, ::lseek(file_, 0, SEEK_CUR) - size);
            }
            if (written.all) {
                written.all = false;
                log_.warning("the capture lacks messages: " + std::generic_category().message(reason));
            }
        });
    } catch (std::exception const &) {
        // Memory is short; the message itself goes on.
    }
}

std::uint32_t Capture::count() {
    return written_.with([](Written const &written) { return written.count; });
}

}  // namespace simulator
