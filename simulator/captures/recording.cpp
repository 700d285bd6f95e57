// SPDX-License-Identifier: Apache-2.0
#include "simulator/captures/recording.h"

#include <boost/json/object.hpp>
#include <boost/json/parse.hpp>
#include <boost/json/value.hpp>
#include <cerrno>
#include <deque>
#include <filesystem>
#include <fstream>
#include <map>
#include <system_error>
#include <utility>

#include "simulator/log.h"

namespace simulator {

namespace json = boost::json;

namespace {

/// In bytes. A message is at most 1 MiB long; each of its bytes may take six here.
constexpr std::size_t longest_line = 8U << 20U;

/// False at the end of the file.
bool readLine(std::istream &stream, std::string &line) {
    line.clear();
    std::streambuf &buffer = *stream.rdbuf();
    for (;;) {
        int const byte = buffer.sbumpc();
        if (byte == std::char_traits<char>::eof()) {
            return !line.empty();
        }
        if (byte == '\n') {
            return true;
        }
        if (line.size() == longest_line) {
            throw CaptureError("is longer than " + std::to_string(longest_line) + " bytes");
        }
        line += static_cast<char>(byte);
    }
}

std::string textIn(json::value const &value, char const *name) {
    if (!value.is_string()) {
        throw CaptureError(std::string("has no text as \"") + name + "\"");
    }
    std::string text(value.get_string());
    if (text.find('\0') != std::string::npos) {
        throw CaptureError(std::string("has the character U+0000 in its \"") + name + "\"");
    }
    return text;
}

json::value const &member(json::object const &object, char const *name) {
    json::value const *const value = object.if_contains(name);
    if (value == nullptr) {
        throw CaptureError(std::string("has no \"") + name + "\"");
    }
    return *value;
}

/// Empty for null, which a text is not.
std::string textOrNull(json::value const &value, char const *name) {
    std::string text = value.is_null() ? "" : textIn(value, name);
    if (text.empty() && !value.is_null()) {
        throw CaptureError(std::string("has an empty \"") + name + "\"");
    }
    return text;
}

Recording::Message readMessage(std::string const &line) {
    json::error_code error;
    json::value const value = json::parse(line, error);
    if (error) {
        throw CaptureError("is no JSON: " + error.message());
    }
    if (!value.is_object()) {
        throw CaptureError("is no JSON object");
    }
    json::object const &object = value.get_object();
    Recording::Message message;
    std::string const time = textIn(member(object, "time"), "time");
    auto const moment = readPreciseMoment(time);
    if (!moment) {
        throw CaptureError("has as \"time\" " + simulator::quoted(time) + ", which " + no_moment);
    }
    message.time = *moment;
    message.peer = textOrNull(member(object, "peer"), "peer");
    if (json::value const *const request = object.if_contains("request")) {
        message.request = textOrNull(*request, "request");
    }
    std::string const direction = textIn(member(object, "direction"), "direction");
    if (direction != Capture::to_service_text && direction != Capture::from_service_text) {
        throw CaptureError("has as \"direction\" " + simulator::quoted(direction) + ", which is neither \"" +
                           Capture::to_service_text + "\" nor \"" + Capture::from_service_text + "\"");
    }
    message.direction = direction == Capture::to_service_text ? Capture::Direction::to_service
                                                              : Capture::Direction::from_service;
    if (message.isEvent() && message.direction == Capture::Direction::to_service) {
        throw CaptureError("is a message to the service and has no peer that sent it");
    }
    json::value const &text = member(object, "text");
    if (!text.is_null()) {
        message.text = textIn(text, "text");
    }
    return message;
}

/// Finds the command that an answer belongs to: by the request where both tell it, else by the order in which a peer's
/// commands of a name were answered.
class Pairing {
  public:
    explicit Pairing(Recording &recording) : recording_(recording) {}

    void take(std::size_t place) {
        Recording::Message const &message = recording_.messages[place];
        if (message.isEvent()) {
            return;
        }
        std::string const by_request = message.peer + '\n' + message.request;
        std::string const by_name = message.peer + '\n' + commandNameIn(message.text.value_or(""));
        if (message.direction == Capture::Direction::to_service) {
            if (message.request.empty()) {
                waiting_[by_name].push_back(recording_.exchanges.size());
            } else {
                requests_[by_request] = recording_.exchanges.size();
            }
            recording_.exchanges.push_back({place, {}});
            return;
        }
        if (auto const found = requests_.find(by_request);
            !message.request.empty() && found != requests_.end()) {
            recording_.exchanges[found->second].answers.push_back(place);
            return;
        }
        auto const waiting = waiting_.find(by_name);
        if (!message.request.empty() || waiting == waiting_.end() || waiting->second.empty()) {
            ++recording_.strays;
            return;
        }
        recording_.exchanges[waiting->second.front()].answers.push_back(place);
        waiting->second.pop_front();
    }

  private:
    Recording &recording_;
    std::map<std::string, std::size_t> requests_;
    std::map<std::string, std::deque<std::size_t>> waiting_;
};

}  // namespace

std::string commandNameIn(std::string_view text) {
    json::error_code error;
    json::value const value = json::parse(json::string_view(text.data(), text.size()), error);
    json::object const *const object = error ? nullptr : value.if_object();
    json::value const *const name = object == nullptr ? nullptr : object->if_contains("command");
    return name == nullptr || !name->is_string() ? "" : std::string(name->get_string());
}

Recording readRecording(std::istream &stream) {
    Recording recording;
    std::string line;
    std::size_t number = 1;
    try {
        Pairing pairing(recording);
        for (; readLine(stream, line); ++number) {
            Recording::Message message = readMessage(line);
            message.line = number;
            recording.messages.push_back(std::move(message));
            pairing.take(recording.messages.size() - 1);
        }
    } catch (CaptureError const &error) {
        throw CaptureError("line " + std::to_string(number) + " " + error.what());
    }
    if (recording.messages.empty()) {
        throw CaptureError("it holds no message");
    }
    return recording;
}

Recording readCapture(std::string const &path) {
    auto const refused = [&path](std::string const &why) {
        return CaptureError("cannot read the capture " + simulator::quoted(path) + ": " + why);
    };
    std::error_code error;
    // A pipe could keep the service waiting.
    bool const is_plain = std::filesystem::is_regular_file(path, error);
    if (error) {
        throw refused(error.message());
    }
    if (!is_plain) {
        throw refused("it is no plain file");
    }
    auto const size = std::filesystem::file_size(path, error);
    if (!error && size > longest_capture) {
        throw refused("it is longer than " + std::to_string(longest_capture) + " bytes");
    }
    std::ifstream stream(path, std::ios::binary);
    if (!stream) {
        throw refused(std::generic_category().message(errno));
    }
    try {
        return readRecording(stream);
    } catch (CaptureError const &wrong) {
        throw refused(wrong.what());
    }
}

}  // namespace simulator
