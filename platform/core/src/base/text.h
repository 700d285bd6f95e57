// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_PLATFORM_TEXT_H
#define KORVO_PLATFORM_TEXT_H

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <string_view>

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

/// The text, or an empty one for NULL.
inline std::string_view orEmpty(char const *text) {
    return text != nullptr ? std::string_view(text) : std::string_view();
}

}  // namespace platform

#endif
