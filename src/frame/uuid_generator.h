// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_FRAME_UUID_GENERATOR_H
#define KORVO_FRAME_UUID_GENERATOR_H

#include <boost/random/mersenne_twister.hpp>
#include <boost/random/uniform_int.hpp>
#include <boost/random/variate_generator.hpp>
#include <boost/smart_ptr/shared_ptr.hpp>

/// Makes random (version 4) UUID texts. Threads may share a generator: nobody waits, and no two get the same text.
class UuidGenerator {
  public:
    /// Seeds a twister on the heap from one block of the operating system's entropy. Throws std::system_error when
    /// there is none.
    UuidGenerator();

    // A copy would draw from the same twister.
    UuidGenerator(UuidGenerator const &) = delete;
    UuidGenerator &operator=(UuidGenerator const &) = delete;

    /// A new text of 36 lower-case characters, freed with free(). Throws std::bad_alloc, or std::system_error when the
    /// twister is busy and there is no entropy.
    char *generate();

  private:
    using Twister = boost::mt19937;
    struct SharedTwister;

    // Fields of korvoInterfaces stand behind these two, so their sizes are binary interface. What else a generator
    // needs is on the heap, beside the twister.
    boost::shared_ptr<Twister> twister_;
    boost::variate_generator<Twister *, boost::uniform_int<unsigned long>> next_word_;
};

#endif
