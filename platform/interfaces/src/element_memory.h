// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_INTERFACES_ELEMENT_MEMORY_H
#define KORVO_INTERFACES_ELEMENT_MEMORY_H

#include <atomic>
#include <cstddef>
#include <utility>

#include "json/json.h"

namespace json_text {

/// Makes the elements of one message, side by side in blocks in place of one allocation for each. An element is deleted
/// like any other, by any thread; the last one of a block takes the block along, and none needs the object that made
/// it. So an element that outlives its message keeps one block alive; a copy of it does not.
class ElementMemory {
  public:
    ElementMemory() = default;
    ~ElementMemory() { close(); }

    ElementMemory(ElementMemory const &) = delete;
    ElementMemory &operator=(ElementMemory const &) = delete;

    /// A new element with a value of type T, made from `value`. Throws std::bad_alloc.
    template <typename T, typename... Value>
    json::UnknownElement::Imp *make(Value &&...value) {
        return new (*this) Element<T>(std::forward<Value>(value)...);
    }

    /// What one block takes of the heap. Larger blocks would make the C library's allocator tidy up at each.
    static constexpr std::size_t block_size = 1000;

  private:
    /// The elements of a block follow it, each behind a pointer to the block.
    struct alignas(8) Block {
        std::atomic<std::size_t> users;
    };

    template <typename T>
    class Element final : public json::UnknownElement::Imp_T<T> {
      public:
        using json::UnknownElement::Imp_T<T>::Imp_T;

        static void *operator new(std::size_t size, ElementMemory &memory) { return memory.take(size); }
        static void operator delete(void *element, ElementMemory &) { give(element); }
        static void operator delete(void *element) { give(element); }
    };

    void *take(std::size_t size) {
        std::size_t const needed = align(sizeof(Block *)) + align(size);
        if (needed > room_) {
            open();
        }
        unsigned char *const place = next_;
        next_ += needed;
        room_ -= needed;
        ++made_;
        return ::new (place) Block *(block_) + align(sizeof(Block *)) / sizeof(Block *);
    }

    static void give(void *element) {
        Block *const block = *(static_cast<Block **>(element) - align(sizeof(Block *)) / sizeof(Block *));
        leave(block, 1);
    }

    static void leave(Block *block, std::size_t users) {
        if (block->users.fetch_sub(users, std::memory_order_acq_rel) == users) {
            ::operator delete(block);
        }
    }

    static constexpr std::size_t align(std::size_t size) { return (size + 7) / 8 * 8; }

    void open();
    void close();

    Block *block_ = nullptr;
    unsigned char *next_ = nullptr;
    std::size_t room_ = 0;
    std::size_t made_ = 0;
};

}  // namespace json_text

#endif
