// SPDX-License-Identifier: Apache-2.0
#include "processes/text_stream.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <utility>

namespace processes {

void Descriptor::reset() {
    if (descriptor_ >= 0) {
        close(descriptor_);
        descriptor_ = -1;
    }
}

TextStream::TextStream(Descriptor descriptor)
    : descriptor_(std::move(descriptor)), wake_(eventfd(0, EFD_CLOEXEC)), thread_([this] { read(); }) {}

TextStream::~TextStream() {
    std::uint64_t const one = 1;
    (void)!write(wake_.get(), &one, sizeof one);
    thread_.join();
}

void TextStream::read() {
    pollfd watched[] = {{descriptor_.get(), POLLIN, 0}, {wake_.get(), POLLIN, 0}};
    for (;;) {
        if (poll(watched, 2, -1) < 0 && errno == EINTR) {
            continue;
        }
        if (watched[0].revents == 0) {
            return;
        }
        char buffer[65536];
        ssize_t const got = ::read(descriptor_.get(), buffer, sizeof buffer);
        std::lock_guard<std::mutex> const lock(mutex_);
        changed_.notify_all();
        if (got <= 0) {
            ended_ = true;
            return;
        }
        text_.append(buffer, static_cast<std::size_t>(got));
    }
}

std::string TextStream::text() const {
    std::lock_guard<std::mutex> const lock(mutex_);
    return text_;
}

std::size_t TextStream::size() const {
    std::lock_guard<std::mutex> const lock(mutex_);
    return text_.size();
}

bool TextStream::waitFor(std::string_view wanted, std::size_t from, milliseconds limit) const {
    std::unique_lock<std::mutex> lock(mutex_);
    auto const found = [&] { return text_.find(wanted, from) != std::string::npos; };
    changed_.wait_for(lock, limit, [&] { return ended_ || found(); });
    return found();
}

bool TextStream::waitForEnd(milliseconds limit) const {
    std::unique_lock<std::mutex> lock(mutex_);
    return changed_.wait_for(lock, limit, [&] { return ended_; });
}

std::size_t count(std::string_view text, std::string_view wanted) {
    std::size_t times = 0;
    for (auto place = text.find(wanted); place != std::string_view::npos;
         place = text.find(wanted, place + wanted.size())) {
        ++times;
    }
    return times;
}

}  // namespace processes
