// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_PLATFORM_DOCUMENT_CACHE_H
#define KORVO_PLATFORM_DOCUMENT_CACHE_H

#include <memory>
#include <string>

#include "base/process.h"
#include "base/thread_annotations.h"
#include "settings/settings_file.h"

namespace platform {

/// A file in the state folder, read when it has changed. Which folder that is, is found out at first use and
/// again after the last end(). Lives as long as the process, and is used by all threads.
///
/// The mutex is held while members are copied or exchanged and never while files are used, since a fork waits
/// for it. That is also why no descriptor may be opened or closed under it.
class DocumentCache {
  public:
    explicit DocumentCache(char const *file_name) : file_name_(file_name) {}
    DocumentCache(DocumentCache const &) = delete;
    DocumentCache &operator=(DocumentCache const &) = delete;

    /// Counts the uses that ask for the document to be held. The last end() drops it; one without a begin()
    /// does too.
    void begin();
    void end();

    /// The document as it is now. Throws DamagedDocument, or another std::runtime_error.
    virtual std::shared_ptr<Snapshot const> current();

    std::string folder();
    std::string path() { return folder() + "/" + file_name_; }
    std::string const &fileName() const { return file_name_; }

  protected:
    // Nobody destroys one.
    ~DocumentCache() = default;

    /// Makes `snapshot` the one that is held. `found_no_file` is remembered until the last end().
    void hold(std::shared_ptr<Snapshot const> snapshot, bool found_no_file);
    bool hasFoundNoFile();

  private:
    std::string const file_name_;
    process::ForkSafeMutex mutex_;
    unsigned int users_ KORVO_GUARDED_BY(mutex_) = 0;
    std::string folder_ KORVO_GUARDED_BY(mutex_);
    std::shared_ptr<Snapshot const> held_ KORVO_GUARDED_BY(mutex_);
    bool found_no_file_ KORVO_GUARDED_BY(mutex_) = false;
};

}  // namespace platform

#endif
