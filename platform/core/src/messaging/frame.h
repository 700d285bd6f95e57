// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_PLATFORM_FRAME_H
#define KORVO_PLATFORM_FRAME_H

// What travels on a connection: a header of eight bytes and a payload.
//
//   byte 0, 1   'K' 'V'
//   byte 2      version of the protocol, 1
//   byte 3      type
//   byte 4..7   length of the payload, least significant byte first
//
// A payload is the texts of the type, each as its length (four bytes, least significant first) and its bytes:
//
//   command       request identifier, command      initiator to service
//   response      request identifier, response     service to initiator
//   event         source, event                    service to initiator
//   subscribe     -                                initiator to service: events, from now on
//   unsubscribe   -                                initiator to service: no more events

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "messaging/bounds.h"

namespace platform::frame {

enum class Type : unsigned char { command = 1, response = 2, event = 3, subscribe = 4, unsubscribe = 5 };

/// The texts point into the decoder that read them.
struct Frame {
    Type type = Type::command;
    std::string_view first;
    std::string_view second;
};

/// Whether a frame with these texts is within the bound of a payload.
bool fits(std::string_view first, std::string_view second);

/// How many bytes that frame has.
std::size_t sizeOf(std::string_view first, std::string_view second);

/// Appends a frame with two texts, which must fit. Throws std::bad_alloc and changes nothing then.
void append(std::string &out, Type type, std::string_view first, std::string_view second);

/// Appends a frame without texts; likewise.
void append(std::string &out, Type type);

/// Cuts a stream of bytes into frames. Whoever reads the stream asks for space(), fills a part of it, says
/// how much with filled(), and takes frames with next() until there is none.
class Decoder {
  public:
    enum class Result { frame, incomplete, broken };

    struct Space {
        char *begin;
        std::size_t size;
    };

    /// Room for the next bytes, never empty. Invalidates the texts of frames taken before. Memory grows with
    /// what has arrived and not with what a header announces. Throws std::bad_alloc.
    Space space();

    /// `count` bytes were written at the beginning of space().
    void filled(std::size_t count) { end_ += count; }

    /// Takes the next frame. After `broken` the stream cannot be read any further; problem() says why.
    Result next(Frame &frame);

    char const *problem() const { return problem_; }

    /// How much memory it holds.
    std::size_t memory() const { return capacity_; }
    /// Gives back the memory of a large frame when nothing is left in it. Invalidates texts.
    void trim();

  private:
    Result refuse(char const *problem);

    std::unique_ptr<char[]> buffer_;
    std::size_t capacity_ = 0;
    std::size_t begin_ = 0;
    std::size_t end_ = 0;
    char const *problem_ = nullptr;
};

}  // namespace platform::frame

#endif
