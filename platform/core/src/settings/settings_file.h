// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_PLATFORM_SETTINGS_FILE_H
#define KORVO_PLATFORM_SETTINGS_FILE_H

// The files of settings on the disk. A file is never written in place: a new one is written beside it and
// moved over it when it is on the disk, so whoever reads sees a whole one. Only one process does that at a
// time, who holds a lock on a file that stays.

#include <sys/stat.h>

#include <memory>
#include <string>
#include <string_view>

#include "base/process.h"
#include "settings/settings_document.h"

namespace platform {

/// A document as it was found on the disk. Unchangeable, so threads share it without a lock.
class Snapshot {
  public:
    /// Reads a file; one that is missing is an empty document. Throws DamagedDocument, or another std::runtime_error.
    static std::shared_ptr<Snapshot const> read(std::string const &path);

    /// What has just been written to `file`.
    Snapshot(Document document, process::Descriptor file);

    Document const &document() const { return document_; }
    bool hasFile() const { return has_file_; }

    /// Whether `path` still names the same file with the same contents. Never for what a parent process has
    /// read.
    bool isCurrent(std::string const &path) const;

  private:
    Document document_;
    // Open, so that no other file gets the same number meanwhile; that is how a replaced file is noticed.
    process::Descriptor file_;
    bool has_file_;
    struct stat identity_ = {};
    unsigned int generation_ = process::generation();
};

/// The right to change a file in a folder. Others, in this process and in others, wait for it.
class WriteLock {
  public:
    /// Makes the folder when it is missing. Throws std::runtime_error.
    WriteLock(std::string folder, std::string name);
    ~WriteLock();

    WriteLock(WriteLock const &) = delete;
    WriteLock &operator=(WriteLock const &) = delete;

    /// Replaces the file and returns the new one. When this returns, it is on the disk. Throws std::runtime_error;
    /// then the file is, but for a failure of the folder, what it was.
    process::Descriptor replace(std::string_view text);

    /// Moves the file to a name that is free, and returns that path. Throws std::runtime_error.
    std::string setAside();

  private:
    void syncFolder() const;
    std::string path(std::string const &name) const { return folder_path_ + "/" + name; }

    std::string folder_path_;
    std::string name_;
    process::Descriptor folder_;
    process::Descriptor lock_;
};

}  // namespace platform

#endif
