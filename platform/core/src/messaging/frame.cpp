// SPDX-License-Identifier: Apache-2.0
#include "messaging/frame.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace platform::frame {

namespace {

constexpr std::size_t header_size = 8;
constexpr std::size_t length_size = 4;
constexpr char magic_first = 'K';
constexpr char magic_second = 'V';
constexpr char version = 1;

/// Afterwards `size` bytes can be appended and nothing fails in the middle of a frame.
void makeRoom(std::string &out, std::size_t size) {
    if (out.capacity() - out.size() < size) {
        out.reserve(std::max(out.size() + size, 2 * out.capacity()));
    }
}

void appendLength(std::string &out, std::size_t length) {
    for (unsigned int shift = 0; shift < 32; shift += 8) {
        out += static_cast<char>((length >> shift) & 0xff);
    }
}

std::size_t readLength(char const *bytes) {
    std::uint32_t length = 0;
    for (unsigned int index = 0; index < length_size; ++index) {
        length |= static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[index])) << (8 * index);
    }
    return length;
}

void appendHeader(std::string &out, Type type, std::size_t payload) {
    out += magic_first;
    out += magic_second;
    out += version;
    out += static_cast<char>(type);
    appendLength(out, payload);
}

bool hasTexts(Type type) {
    return type == Type::command || type == Type::response || type == Type::event;
}

/// Takes one text from the front of `payload`.
bool takeText(std::string_view &payload, std::string_view &text) {
    if (payload.size() < length_size) {
        return false;
    }
    std::size_t const length = readLength(payload.data());
    payload.remove_prefix(length_size);
    if (length > payload.size()) {
        return false;
    }
    text = payload.substr(0, length);
    payload.remove_prefix(length);
    // Texts become C texts; one that ends early there would be another text than the one that was sent.
    return text.find('\0') == std::string_view::npos;
}

}  // namespace

bool fits(std::string_view first, std::string_view second) {
    constexpr std::size_t room = limits::frame_payload - 2 * length_size;
    return first.size() <= room && second.size() <= room - first.size();
}

std::size_t sizeOf(std::string_view first, std::string_view second) {
    return header_size + 2 * length_size + first.size() + second.size();
}

void append(std::string &out, Type type, std::string_view first, std::string_view second) {
    std::size_t const size = sizeOf(first, second);
    makeRoom(out, size);
    appendHeader(out, type, size - header_size);
    appendLength(out, first.size());
    out += first;
    appendLength(out, second.size());
    out += second;
}

void append(std::string &out, Type type) {
    makeRoom(out, header_size);
    appendHeader(out, type, 0);
}

void Decoder::trim() {
    if (begin_ == end_) {
        begin_ = end_ = 0;
        if (capacity_ > 2 * limits::read_buffer) {
            buffer_.reset();
            capacity_ = 0;
        }
    }
}

Decoder::Space Decoder::space() {
    trim();
    if (capacity_ - end_ < limits::read_buffer / 4) {
        std::size_t const held = end_ - begin_;
        if (capacity_ - held >= limits::read_buffer / 2) {
            std::memmove(buffer_.get(), buffer_.get() + begin_, held);
        } else {
            std::size_t const larger = std::max(limits::read_buffer, 2 * capacity_);
            std::unique_ptr<char[]> grown(new char[larger]);
            if (held != 0) {
                std::memcpy(grown.get(), buffer_.get() + begin_, held);
            }
            buffer_ = std::move(grown);
            capacity_ = larger;
        }
        begin_ = 0;
        end_ = held;
    }
    return {buffer_.get() + end_, capacity_ - end_};
}

Decoder::Result Decoder::next(Frame &frame) {
    if (problem_ != nullptr) {
        return Result::broken;
    }
    if (end_ - begin_ < header_size) {
        return Result::incomplete;
    }
    char const *const header = buffer_.get() + begin_;
    if (header[0] != magic_first || header[1] != magic_second) {
        return refuse("it does not begin like a frame");
    }
    if (header[2] != version) {
        return refuse("its protocol version is unknown");
    }
    auto const type = static_cast<Type>(header[3]);
    if (type < Type::command || type > Type::unsubscribe) {
        return refuse("its type is unknown");
    }
    std::size_t const length = readLength(header + 4);
    if (length > limits::frame_payload) {
        return refuse("it announces more bytes than a frame may have");
    }
    if (end_ - begin_ - header_size < length) {
        return Result::incomplete;
    }
    std::string_view payload(header + header_size, length);
    frame = Frame();
    frame.type = type;
    if (hasTexts(type) && !(takeText(payload, frame.first) && takeText(payload, frame.second))) {
        return refuse("its texts do not fit into it or hold a zero byte");
    }
    if (!payload.empty()) {
        return refuse("it holds more than its type has");
    }
    begin_ += header_size + length;
    return Result::frame;
}

Decoder::Result Decoder::refuse(char const *problem) {
    problem_ = problem;
    return Result::broken;
}

}  // namespace platform::frame
