// SPDX-License-Identifier: Apache-2.0
#include "settings/settings_file.h"

#include <fcntl.h>
#include <stdio.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "base/logging.h"
#include "settings/bounds.h"
#include "settings/state_folder.h"

namespace platform {

namespace {

constexpr char const *lock_suffix = ".lock";
constexpr char const *unfinished_suffix = ".new";
constexpr char const *damaged_suffix = ".damaged-";
constexpr mode_t for_the_user = S_IRUSR | S_IWUSR;

std::runtime_error failure(std::string const &what, std::string const &path, std::string const &why) {
    return std::runtime_error("cannot " + what + " " + path + ": " + why +
                              "; see to the file and its folder, or name another folder in KORVO_STATE_DIR");
}

std::runtime_error failure(std::string const &what, std::string const &path) {
    return failure(what, path, errorText(errno));
}

std::string readAll(int file, std::string const &path) {
    std::string text;
    char buffer[4096];
    for (;;) {
        ssize_t const count = ::read(file, buffer, sizeof buffer);
        if (count < 0) {
            if (errno == EINTR) {
                continue;
            }
            throw failure("read", path);
        }
        if (count == 0) {
            return text;
        }
        text.append(buffer, static_cast<std::size_t>(count));
        if (text.size() > limits::settings_file) {
            throw failure("read", path,
                          "it has more than " + std::to_string(limits::settings_file) + " bytes");
        }
    }
}

/// Returns false, with errno, when not all of it is on the disk.
bool writeAll(int file, std::string_view text) {
    while (!text.empty()) {
        ssize_t const count = ::write(file, text.data(), text.size());
        if (count < 0 && errno != EINTR) {
            return false;
        }
        text.remove_prefix(count < 0 ? 0 : static_cast<std::size_t>(count));
    }
    return fsync(file) == 0;
}

bool isSameTime(timespec const &left, timespec const &right) {
    return left.tv_sec == right.tv_sec && left.tv_nsec == right.tv_nsec;
}

}  // namespace

std::shared_ptr<Snapshot const> Snapshot::read(std::string const &path) {
    // Without waiting: the name may be that of a pipe.
    auto file =
        process::Descriptor::madeBy([&] { return open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK); });
    if (!file) {
        if (errno == ENOENT) {
            return std::make_shared<Snapshot>(Document(), process::Descriptor());
        }
        throw failure("open", path);
    }
    struct stat before = {};
    if (fstat(file.get(), &before) != 0) {
        throw failure("look at", path);
    }
    if (!S_ISREG(before.st_mode)) {
        throw failure("read", path, "it is no file");
    }
    if (before.st_uid != geteuid() && before.st_uid != 0) {
        throw failure("use", path, "it belongs to user " + std::to_string(before.st_uid));
    }
    std::string const text = readAll(file.get(), path);
    try {
        auto const snapshot = std::make_shared<Snapshot>(documentFrom(text), std::move(file));
        // Whoever writes to the file while it is read makes it another one.
        snapshot->identity_ = before;
        return snapshot;
    } catch (NewerDocument const &fault) {
        throw std::runtime_error("cannot use " + path + ": " + fault.what());
    }
}

Snapshot::Snapshot(Document document, process::Descriptor file)
    : document_(std::move(document)), file_(std::move(file)), has_file_(static_cast<bool>(file_)) {
    if (has_file_ && fstat(file_.get(), &identity_) != 0) {
        throw failure("look at", "the file that was just written");
    }
}

bool Snapshot::isCurrent(std::string const &path) const {
    if (generation_ != process::generation()) {
        return false;
    }
    struct stat found = {};
    if (stat(path.c_str(), &found) != 0) {
        return !has_file_ && errno == ENOENT;
    }
    return has_file_ && found.st_dev == identity_.st_dev && found.st_ino == identity_.st_ino &&
           found.st_size == identity_.st_size && isSameTime(found.st_mtim, identity_.st_mtim);
}

WriteLock::WriteLock(std::string folder, std::string name)
    : folder_path_(std::move(folder)), name_(std::move(name)), folder_(openStateFolder(folder_path_)) {
    std::string const lock_name = name_ + lock_suffix;
    lock_ = process::Descriptor::madeBy([&] {
        return openat(folder_.get(), lock_name.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW,
                      for_the_user);
    });
    if (!lock_) {
        throw failure("make or open", path(lock_name));
    }
    while (flock(lock_.get(), LOCK_EX) != 0) {
        if (errno != EINTR) {
            throw failure("lock", path(lock_name));
        }
    }
}

WriteLock::~WriteLock() {
    // Closing alone would leave the lock with a child that was forked just now and has not closed its copy.
    (void)flock(lock_.get(), LOCK_UN);
}

process::Descriptor WriteLock::replace(std::string_view text) {
    std::string const unfinished = name_ + unfinished_suffix;
    // What a crash has left; whoever else had made it could read what is written into it.
    (void)unlinkat(folder_.get(), unfinished.c_str(), 0);
    auto file = process::Descriptor::madeBy([&] {
        return openat(folder_.get(), unfinished.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW,
                      for_the_user);
    });
    if (!file) {
        throw failure("make", path(unfinished));
    }
    if (!writeAll(file.get(), text)) {
        std::runtime_error const why = failure("write", path(unfinished));
        (void)unlinkat(folder_.get(), unfinished.c_str(), 0);
        throw why;
    }
    if (renameat(folder_.get(), unfinished.c_str(), folder_.get(), name_.c_str()) != 0) {
        std::runtime_error const why = failure("replace", path(name_));
        (void)unlinkat(folder_.get(), unfinished.c_str(), 0);
        throw why;
    }
    syncFolder();
    return file;
}

std::string WriteLock::setAside() {
    for (unsigned int number = 1;; ++number) {
        std::string const other = name_ + damaged_suffix + std::to_string(number);
        struct stat ignored = {};
        if (fstatat(folder_.get(), other.c_str(), &ignored, AT_SYMLINK_NOFOLLOW) == 0) {
            continue;
        }
        if (errno != ENOENT || renameat(folder_.get(), name_.c_str(), folder_.get(), other.c_str()) != 0) {
            throw failure("put aside", path(name_));
        }
        syncFolder();
        return path(other);
    }
}

void WriteLock::syncFolder() const {
    if (fsync(folder_.get()) != 0) {
        throw failure("write", folder_path_);
    }
}

}  // namespace platform
