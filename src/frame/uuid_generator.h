// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_FRAME_UUID_GENERATOR_H
#define KORVO_FRAME_UUID_GENERATOR_H

#include <boost/smart_ptr/shared_ptr.hpp>

/// Makes random (version 4) UUID texts. Threads may share a generator: nobody waits, and no two get the same text.
class UuidGenerator {
  public:
    /// Seeds a generator on the heap from the operating system's entropy.
    UuidGenerator();

    /// A new text of 36 lower-case characters, freed with free(). Throws std::bad_alloc, or Boost's entropy error.
    char *generate() const;

  private:
    struct Source;
    boost::shared_ptr<Source> source_;
};

#endif
