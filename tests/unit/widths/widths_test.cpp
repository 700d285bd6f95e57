// SPDX-License-Identifier: Apache-2.0
// What the widths of types must be, and what becomes of sizes that the camera's do not hold.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <ctime>

#include "korvo_core.h"

namespace {

/// A file without a name, gone when it is closed.
class NamelessFile {
  public:
    NamelessFile() : stream_(std::tmpfile()) {}
    ~NamelessFile() {
        if (stream_ != nullptr) {
            (void)std::fclose(stream_);
        }
    }
    NamelessFile(NamelessFile const &) = delete;
    NamelessFile &operator=(NamelessFile const &) = delete;

    bool isOpen() const { return stream_ != nullptr; }
    int descriptor() const { return fileno(stream_); }

  private:
    std::FILE *stream_;
};

}  // namespace

TEST(Widths, OfTimesAndFilesAre64BitsOnEveryMachine) {
    EXPECT_EQ(sizeof(std::time_t) * CHAR_BIT, 64U);
    EXPECT_EQ(sizeof(off_t) * CHAR_BIT, 64U);
    EXPECT_EQ(sizeof(ino_t) * CHAR_BIT, 64U);
}

TEST(Widths, LetUsLookAtLargeFiles) {
    constexpr off_t size = 5'000'000'000;
    NamelessFile const file;
    ASSERT_TRUE(file.isOpen());
    ASSERT_EQ(ftruncate(file.descriptor(), size), 0);
    struct stat found = {};
    ASSERT_EQ(fstat(file.descriptor(), &found), 0);
    EXPECT_EQ(found.st_size, size);
}

#if defined(__arm__)

TEST(Widths, OfTheCameraAreWhatItsLibrariesAreBuiltFor) {
    EXPECT_EQ(sizeof(void *), 4U);
    EXPECT_EQ(sizeof(std::size_t), 4U);
    EXPECT_EQ(sizeof(int), 4U);
    EXPECT_EQ(sizeof(long), 4U);
    EXPECT_EQ(sizeof(long long), 8U);
    EXPECT_EQ(alignof(long long), 8U);
    EXPECT_EQ(sizeof(double), 8U);
    EXPECT_EQ(alignof(double), 8U);
    EXPECT_EQ(sizeof(wchar_t), 4U);
    EXPECT_EQ(sizeof(korvo_core_status), 4U);
    EXPECT_EQ(CHAR_MIN, 0);
}

#endif

#if SIZE_MAX == UINT32_MAX

TEST(Lists, LargerThanAllMemoryAreRefused) {
    // With four bytes a slot and one slot more for the end: just too many, and what would come round to nothing.
    for (unsigned int const count :
         {1'073'741'822U, 1'073'741'823U, 1'073'741'824U, 2'147'483'647U, 2'147'483'648U, 4'294'967'295U}) {
        EXPECT_EQ(korvo_core_alloc_string_array(count), nullptr) << count;
        EXPECT_EQ(korvo_core_alloc_uint_array(count), nullptr) << count;
    }
}

#endif
