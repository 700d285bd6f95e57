// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_PLATFORM_TEXT_H
#define KORVO_PLATFORM_TEXT_H

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <string_view>
#include <utility>

namespace platform {

/// A C text in a block of its own from malloc(), as callers of the C interface free it.
class Text {
  public:
    Text() = default;

    /// Copies `view`; throws std::bad_alloc.
    explicit Text(std::string_view view)
        : block_(static_cast<char *>(std::malloc(view.size() + 1))), size_(view.size()) {
        if (block_ == nullptr) {
            throw std::bad_alloc();
        }
        if (!view.empty()) {
            std::memcpy(block_.get(), view.data(), view.size());
        }
        block_.get()[size_] = '\0';
    }

    explicit operator bool() const { return block_ != nullptr; }
    char *get() const { return block_.get(); }
    std::size_t size() const { return size_; }
    std::string_view view() const { return {block_.get(), size_}; }

    /// Gives the block to the caller, who frees it with free().
    char *release() { return block_.release(); }

  private:
    struct Free {
        void operator()(char *block) const { std::free(block); }
    };

    std::unique_ptr<char, Free> block_;
    std::size_t size_ = 0;
};

/// Lends a text to a callback that may take it by setting the pointer to NULL; frees what was not taken.
class LentText {
  public:
    explicit LentText(Text text) : pointer_(text.release()) {}
    explicit LentText(std::string_view view) : LentText(Text(view)) {}
    ~LentText() { std::free(pointer_); }

    LentText(LentText const &) = delete;
    LentText &operator=(LentText const &) = delete;

    char **address() { return &pointer_; }

  private:
    char *pointer_;
};

/// Lends copies of texts to callbacks, one after the other, and uses the block again that no callback has taken. For one
/// thread at a time.
class ReusedText {
  public:
    ReusedText() = default;
    ~ReusedText() { std::free(pointer_); }

    ReusedText(ReusedText const &) = delete;
    ReusedText &operator=(ReusedText const &) = delete;

    /// A copy of `view`, which the callback may change, and may take by setting the pointer to NULL. Valid until the next
    /// call; throws std::bad_alloc.
    char **lend(std::string_view view) {
        if (pointer_ == nullptr || pointer_ != lent_ || room_ <= view.size() || room_ > most_kept) {
            std::free(std::exchange(pointer_, nullptr));
            room_ = std::max(view.size() + 1, least);
            pointer_ = lent_ = static_cast<char *>(std::malloc(room_));
            if (pointer_ == nullptr) {
                throw std::bad_alloc();
            }
        }
        if (!view.empty()) {
            std::memcpy(pointer_, view.data(), view.size());
        }
        pointer_[view.size()] = '\0';
        return &pointer_;
    }

  private:
    static constexpr std::size_t least = 64;
    static constexpr std::size_t most_kept = 4096;

    char *pointer_ = nullptr;
    /// What the pointer was when it was lent.
    char *lent_ = nullptr;
    std::size_t room_ = 0;
};

/// The text, or an empty one for NULL.
inline std::string_view orEmpty(char const *text) {
    return text != nullptr ? std::string_view(text) : std::string_view();
}

}  // namespace platform

#endif
