// SPDX-License-Identifier: Apache-2.0
#include "simulator/runners/file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <stdexcept>
#include <system_error>

#include "simulator/log.h"

namespace simulator::runners {

namespace {

class Descriptor {
  public:
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor() {
        if (number_ >= 0) {
            ::close(number_);
        }
    }
    Descriptor(Descriptor const &) = delete;
    Descriptor &operator=(Descriptor const &) = delete;

    int number() const { return number_; }

  private:
    int number_;
};

[[noreturn]] void fail(std::string const &what, int error) {
    throw std::runtime_error(what + ": " + std::generic_category().message(error));
}

void writeAll(int file, std::string_view contents) {
    while (!contents.empty()) {
        ssize_t const written = ::write(file, contents.data(), contents.size());
        if (written < 0 && errno != EINTR) {
            fail("cannot write the file", errno);
        }
        if (written > 0) {
            contents.remove_prefix(static_cast<std::size_t>(written));
        }
    }
}

/// A name that only files that are just being written have.
std::string unfinishedName() {
    static std::atomic<unsigned int> count{0};
    return ".unfinished-" + std::to_string(::getpid()) + "-" + std::to_string(++count);
}

}  // namespace

char const *nameFault(std::string_view name) {
    constexpr std::size_t longest = 255;
    if (name.empty()) {
        return "it is empty";
    }
    if (name.size() > longest) {
        return "it is longer than 255 bytes";
    }
    if (name.find('/') != std::string_view::npos) {
        return "it has a \"/\", and files go into the folder itself only";
    }
    if (name.find('\0') != std::string_view::npos) {
        return "it has a NUL character";
    }
    if (name.front() == '.') {
        return "it begins with a dot";
    }
    return nullptr;
}

void writeFile(std::string const &folder, std::string const &name, std::string_view contents) {
    if (char const *const fault = nameFault(name)) {
        throw std::runtime_error("the file name " + quoted(name) + " is refused: " + fault);
    }
    Descriptor const directory(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (directory.number() < 0) {
        fail("cannot open the folder " + quoted(folder), errno);
    }
    struct stat present {};
    if (::fstatat(directory.number(), name.c_str(), &present, AT_SYMLINK_NOFOLLOW) == 0 &&
        !S_ISREG(present.st_mode)) {
        throw std::runtime_error("the file name " + quoted(name) +
                                 " is refused: what has that name in the folder is no plain file");
    }
    std::string const unfinished = unfinishedName();
    try {
        Descriptor const file(::openat(directory.number(), unfinished.c_str(),
                                       O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
        if (file.number() < 0) {
            fail("cannot make a file in the folder " + quoted(folder), errno);
        }
        writeAll(file.number(), contents);
        if (::renameat(directory.number(), unfinished.c_str(), directory.number(), name.c_str()) != 0) {
            fail("cannot put the file in its place", errno);
        }
    } catch (...) {
        ::unlinkat(directory.number(), unfinished.c_str(), 0);
        throw;
    }
}

}  // namespace simulator::runners
