// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_PROCESSES_TEXT_STREAM_H
#define KORVO_TESTS_PROCESSES_TEXT_STREAM_H

#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

#include "processes/limits.h"

namespace processes {

/// Owns a descriptor.
class Descriptor {
  public:
    explicit Descriptor(int descriptor = -1) : descriptor_(descriptor) {}
    ~Descriptor() { reset(); }
    Descriptor(Descriptor &&other) noexcept : descriptor_(other.descriptor_) { other.descriptor_ = -1; }
    Descriptor &operator=(Descriptor &&) = delete;

    int get() const { return descriptor_; }
    void reset();

  private:
    int descriptor_;
};

/// Keeps all that is written to a pipe. A thread of its own reads it, so that the writer never waits.
class TextStream {
  public:
    /// Takes the reading end of a pipe.
    explicit TextStream(Descriptor descriptor);
    ~TextStream();

    TextStream(TextStream const &) = delete;
    TextStream &operator=(TextStream const &) = delete;

    std::string text() const;
    std::size_t size() const;

    /// Waits until `wanted` stands in the text, `from` this place on. False when it does not come in time, or the
    /// writer has ended without it.
    bool waitFor(std::string_view wanted, std::size_t from = 0, milliseconds limit = patience) const;

    /// Waits until all writers have closed the pipe; then text() is complete.
    bool waitForEnd(milliseconds limit = patience) const;

  private:
    void read();

    Descriptor descriptor_;
    Descriptor wake_;
    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    std::string text_;
    bool ended_ = false;
    std::thread thread_;
};

/// How often `wanted` stands in `text`.
std::size_t count(std::string_view text, std::string_view wanted);

}  // namespace processes

#endif
