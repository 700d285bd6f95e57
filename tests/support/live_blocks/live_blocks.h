// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_LIVE_BLOCKS_H
#define KORVO_TESTS_LIVE_BLOCKS_H

// Which heap blocks a piece of code leaves behind, and allocations that fail.

#include <cstddef>
#include <cstdint>
#include <vector>

namespace live_blocks {

struct Block {
    void *address;
    std::size_t size;
};

/// Whose blocks are recorded beside the calling thread's: nobody's, or those of the threads that it starts meanwhile. The
/// latter must have ended when the recording does; what a detached thread frees late would look left behind.
enum class Threads { own, started };

/// Records the blocks that the calling thread allocates from here on, and forgets those that any thread frees. One
/// recording at a time.
class Recording {
  public:
    explicit Recording(Threads threads = Threads::own);
    ~Recording();
    Recording(Recording const &) = delete;
    Recording &operator=(Recording const &) = delete;

    /// Ends the recording and gives the blocks that are left, in no order; the caller frees them.
    std::vector<Block> end();

    /// How many blocks the recording has seen, those that were freed again included.
    std::size_t allocations() const;
};

/// Whether the calling thread is being recorded: for others who make what it does fail.
bool isRecorded();

/// While one of these lives, the calling thread's allocations are neither recorded nor made to fail: for allocators and
/// callbacks of the test's own, whose blocks are nobody's leak.
class Unnoticed {
  public:
    Unnoticed();
    ~Unnoticed();
    Unnoticed(Unnoticed const &) = delete;
    Unnoticed &operator=(Unnoticed const &) = delete;

  private:
    bool recorded_;
    std::size_t until_failure_;
};

/// Can allocations be made to fail here? Not under a sanitizer that has an allocator of its own.
bool canFail();

namespace detail {

void arrangeFailure(std::size_t nth);
bool hasFailed();

}  // namespace detail

/// Lets all allocations succeed from here on; for code of the test's own that is called from within.
void stopFailing();

/// Runs code while the nth allocation of the calling thread fails (1 is its first one), and tells whether the
/// code got as far as that.
template <typename Code>
bool failNth(std::size_t nth, Code const &code) {
    detail::arrangeFailure(nth);
    code();
    stopFailing();
    return detail::hasFailed();
}

/// Is called in the thread whose allocation FailingAllocations lets fail, before that fails; nothing of its own fails or is
/// recorded. For tests that want to know who it was.
void onFailure(void (*hook)());

/// Is asked each time that a thread which is being recorded starts another; where it says so, that gets EAGAIN.
void refuseThreads(bool (*refuses)());

/// As many in a row as there are.
constexpr std::size_t for_ever = SIZE_MAX;

/// While one of these lives, allocations fail: `count` in a row, from the nth on (1 is the first). Those of all threads
/// that are being recorded are counted together, of others none. One at a time, and only where canFail().
class FailingAllocations {
  public:
    FailingAllocations(std::size_t nth, std::size_t count);
    ~FailingAllocations() { stop(); }
    FailingAllocations(FailingAllocations const &) = delete;
    FailingAllocations &operator=(FailingAllocations const &) = delete;

    /// Lets all succeed from here on.
    void stop();
    /// How many have failed so far.
    std::size_t failed() const;
};

}  // namespace live_blocks

#endif
