// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_INTERFACES_ELEMENT_MEMORY_H
#define KORVO_INTERFACES_ELEMENT_MEMORY_H

#include <atomic>
#include <cstddef>
#include <new>
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
    /// Stands before its elements.
    struct alignas(8) Block {
        std::atomic<std::size_t> users;
    };

    /// Stands before each element.
    struct alignas(8) Owner {
        Block *block;
    };

    template <typename T>
    class Element final : public json::UnknownElement::Imp_T<T> {
        static_assert(alignof(T) <= alignof(Owner));

      public:
        using json::UnknownElement::Imp_T<T>::Imp_T;

        static void *operator new(std::size_t size, ElementMemory &memory) { return memory.take(size); }
        static void operator delete(void *element, ElementMemory &) { give(element); }
        static void operator delete(void *element) { give(element); }
    };

    void *take(std::size_t size) {
        std::size_t const needed = sizeof(Owner) + (size + 7) / 8 * 8;
        if (needed > room_) {
            open();
        }
        auto *const owner = ::new (next_) Owner{block_};
        next_ += needed;
        room_ -= needed;
        ++made_;
        return owner + 1;
    }

    static void give(void *element) { leave((static_cast<Owner *>(element) - 1)->block, 1); }

    static void leave(Block *block, std::size_t users) {
        if (block->users.fetch_sub(users, std::memory_order_acq_rel) == users) {
            ::operator delete(block);
        }
    }

    void open();
    void close();

    Block *block_ = nullptr;
    unsigned char *next_ = nullptr;
    std::size_t room_ = 0;
    std::size_t made_ = 0;
};

}  // namespace json_text

#endif
