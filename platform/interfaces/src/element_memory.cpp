// SPDX-License-Identifier: Apache-2.0
#include "element_memory.h"

namespace json_text {

namespace {

/// More users than a block has room for: what its maker counts for until it knows how many elements it has made.
constexpr std::size_t maker = ElementMemory::block_size;

}  // namespace

void ElementMemory::open() {
    void *const memory = ::operator new(block_size);
    close();
    block_ = ::new (memory) Block{{maker}};
    next_ = static_cast<unsigned char *>(memory) + sizeof(Block);
    room_ = block_size - sizeof(Block);
    made_ = 0;
}

void ElementMemory::close() {
    if (block_ != nullptr) {
        leave(block_, maker - made_);
    }
}

}  // namespace json_text
