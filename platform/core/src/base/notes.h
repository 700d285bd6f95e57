// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_PLATFORM_NOTES_H
#define KORVO_PLATFORM_NOTES_H

#include <cstdarg>
#include <cstdint>
#include <mutex>
#include <new>
#include <string>
#include <vector>

#include "base/log_record.h"
#include "base/logging.h"
#include "base/mutex.h"

namespace platform {

/// Holds a mutex and collects the log lines of the work done under it; they are written after the mutex is
/// free, since whoever reads the log may be slow or stopped.
///
/// A function that is given a Hold has the mutex when it is called and when it returns, unless it says otherwise.
/// The analysis of locks does not see which mutex that is, so whoever frees it for a while names it.
class KORVO_SCOPED_CAPABILITY Hold {
  public:
    Hold(Mutex &mutex, Log const &log) KORVO_ACQUIRE(mutex) : lock_(mutex.underlying()), log_(log) {}
    ~Hold() KORVO_RELEASE() {
        if (lock_.owns_lock()) {
            lock_.unlock();
        }
        writeNotes();
    }

    Hold(Hold const &) = delete;
    Hold &operator=(Hold const &) = delete;

    /// `mutex` is the one that was given to the constructor, here and in unlock().
    void lock([[maybe_unused]] Mutex &mutex) KORVO_ACQUIRE(mutex) KORVO_NO_ANALYSIS { lock_.lock(); }
    void unlock([[maybe_unused]] Mutex &mutex) KORVO_RELEASE(mutex) KORVO_NO_ANALYSIS {
        lock_.unlock();
        writeNotes();
    }
    /// For the end of a scope that an exception may leave with the mutex free.
    void ensureLocked() {
        if (!lock_.owns_lock()) {
            lock_.lock();
        }
    }
    /// For condition variables.
    std::unique_lock<std::mutex> &mutex() { return lock_; }

    /// Notes a line. One that memory is too short for is left out: it must not fail the work that it tells of.
    void warn(char const *format, ...) noexcept KORVO_CORE_PRINTF(2, 3) {
        va_list arguments;
        va_start(arguments, format);
        try {
            notes_.push_back(log_record::format(format, arguments));
        } catch (std::bad_alloc const &) {
            // Written nowhere, as the log itself does with what it cannot write.
        }
        va_end(arguments);
    }

  private:
    void writeNotes() noexcept {
        for (std::string const &note : notes_) {
            log_.warning("%s", note.c_str());
        }
        notes_.clear();
    }

    std::unique_lock<std::mutex> lock_;
    Log const &log_;
    std::vector<std::string> notes_;
};

/// Counts what was dropped, and says when to tell of it: at the 1st, 2nd, 4th, 8th and so on, so that a flood
/// does not become a flood of log lines.
class DropCounter {
  public:
    bool count() {
        ++total_;
        return (total_ & (total_ - 1)) == 0;
    }
    unsigned long long total() const { return total_; }

  private:
    std::uint64_t total_ = 0;
};

}  // namespace platform

#endif
