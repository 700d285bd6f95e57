// SPDX-License-Identifier: Apache-2.0
#include "simulator/folders.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <stdexcept>
#include <string>

#include "support.h"

namespace simulator::tests {

TEST(MakeFolder, MakesWhatIsMissingForItsOwnerOnly) {
    TemporaryFolder const folder;
    makeFolder(folder / "a/b");
    makeFolder(folder / "a/b");
    struct stat status {};
    for (char const *const made : {"a", "a/b"}) {
        ASSERT_EQ(::stat((folder / made).c_str(), &status), 0);
        EXPECT_TRUE(S_ISDIR(status.st_mode));
        EXPECT_EQ(status.st_mode & 0777U, 0700U);
    }
}

TEST(MakeFolder, SaysWhenSomethingElseHasThatName) {
    TemporaryFolder const folder;
    writeFile(folder / "file", "");
    for (std::string const &path : {folder / "file", folder / "file/below"}) {
        try {
            makeFolder(path);
            ADD_FAILURE() << path;
        } catch (std::runtime_error const &error) {
            EXPECT_THAT(error.what(), testing::HasSubstr("cannot make the folder \"" + path + "\": "));
        }
    }
}

}  // namespace simulator::tests
