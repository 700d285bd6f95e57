// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

// jpeglib.h uses FILE and size_t without including what declares them.
#include <jpeglib.h>

#include "no_room.h"
#include "simulator/runners/file.h"
#include "simulator/runners/test_picture.h"
#include "support.h"

namespace simulator::runners::tests {

namespace {

using simulator::tests::readFile;
using simulator::tests::TemporaryFolder;
using testing::HasSubstr;

/// What the decoder makes of a JPEG file. Its errors end the program, and so the test.
Picture decode(std::string const &jpeg) {
    jpeg_decompress_struct decoder{};
    jpeg_error_mgr errors{};
    decoder.err = jpeg_std_error(&errors);
    jpeg_create_decompress(&decoder);
    jpeg_mem_src(&decoder, reinterpret_cast<unsigned char const *>(jpeg.data()), jpeg.size());
    EXPECT_EQ(jpeg_read_header(&decoder, TRUE), JPEG_HEADER_OK);
    jpeg_start_decompress(&decoder);
    Picture picture{decoder.output_width, decoder.output_height, {}};
    EXPECT_EQ(decoder.output_components, 3);
    picture.pixels.resize(std::size_t{picture.width} * picture.height * 3);
    while (decoder.output_scanline < decoder.output_height) {
        JSAMPROW row = picture.pixels.data() + std::size_t{decoder.output_scanline} * picture.width * 3;
        jpeg_read_scanlines(&decoder, &row, 1);
    }
    EXPECT_EQ(errors.num_warnings, 0);
    jpeg_finish_decompress(&decoder);
    jpeg_destroy_decompress(&decoder);
    return picture;
}

std::array<int, 3> pixel(Picture const &picture, unsigned int x, unsigned int y) {
    std::size_t const place = (std::size_t{y} * picture.width + x) * 3;
    return {picture.pixels[place], picture.pixels[place + 1], picture.pixels[place + 2]};
}

bool near(std::array<int, 3> const &a, std::array<int, 3> const &b) {
    for (std::size_t n = 0; n < 3; ++n) {
        if (std::abs(a[n] - b[n]) > 24) {
            return false;
        }
    }
    return true;
}

std::string refusal(std::string const &folder, std::string const &name) {
    try {
        writeFile(folder, name, "contents");
    } catch (std::exception const &error) {
        return error.what();
    }
    return "no refusal";
}

}  // namespace

TEST(TestPicture, IsAJpegWithColourBars) {
    Picture const picture = decode(encodeJpeg(drawTestPicture(320, 240, std::chrono::milliseconds(0))));
    ASSERT_EQ(picture.width, 320U);
    ASSERT_EQ(picture.height, 240U);
    // White, yellow, cyan, green, magenta, red, blue, black: 40 pixels each, well above the block.
    EXPECT_TRUE(near(pixel(picture, 20, 10), {235, 235, 235}));
    EXPECT_TRUE(near(pixel(picture, 60, 10), {235, 235, 16}));
    EXPECT_TRUE(near(pixel(picture, 100, 10), {16, 235, 235}));
    EXPECT_TRUE(near(pixel(picture, 140, 10), {16, 235, 16}));
    EXPECT_TRUE(near(pixel(picture, 180, 10), {235, 16, 235}));
    EXPECT_TRUE(near(pixel(picture, 220, 10), {235, 16, 16}));
    EXPECT_TRUE(near(pixel(picture, 260, 10), {16, 16, 235}));
    EXPECT_TRUE(near(pixel(picture, 300, 10), {16, 16, 16}));
}

TEST(TestPicture, HasABlockThatMovesWithTime) {
    Picture const first = decode(encodeJpeg(drawTestPicture(320, 240, std::chrono::milliseconds(5000))));
    Picture const later = decode(encodeJpeg(drawTestPicture(320, 240, std::chrono::milliseconds(7500))));
    // Half way and three quarters of the way from 0 to 260, 60 pixels wide.
    EXPECT_TRUE(near(pixel(first, 160, 120), {255, 255, 255}));
    EXPECT_FALSE(near(pixel(first, 225, 120), {255, 255, 255}));
    EXPECT_TRUE(near(pixel(later, 225, 120), {255, 255, 255}));
    EXPECT_FALSE(near(pixel(later, 160, 120), {255, 255, 255}));
}

TEST(TestPicture, OfASizeThatCannotBeEncodedIsAnError) {
    EXPECT_THROW(encodeJpeg(Picture{0, 0, {}}), std::runtime_error);
}

TEST(FileNames, ThatCouldLeadOutOfTheFolderAreRefused) {
    TemporaryFolder const outer;
    std::string const folder = outer / "snapshots";
    std::filesystem::create_directory(folder);
    std::string const names[] = {
        "",
        ".",
        "..",
        "../outside.jpg",
        "/etc/passwd",
        outer / "absolute.jpg",
        "a/b.jpg",
        "a/../../outside.jpg",
        "./a.jpg",
        ".hidden",
        "a/",
        "/",
        "//",
        std::string("a\0b.jpg", 7),
        std::string("\0", 1),
        std::string(256, 'x'),
        std::string(70'000, 'x'),
    };
    for (std::string const &name : names) {
        EXPECT_THAT(refusal(folder, name), HasSubstr("is refused")) << name;
    }
    EXPECT_TRUE(std::filesystem::is_empty(folder));
    EXPECT_EQ(outer.names(), std::vector<std::string>{"snapshots"});
}

TEST(FileNames, ThatOnlyLookOddAreTaken) {
    TemporaryFolder const folder;
    for (std::string const &name :
         {std::string("a b.jpg"), std::string("a..b"), std::string("\\..\\x"), std::string("-rf"),
          std::string("\u00fc.jpg"), std::string("line\nfeed"), std::string(255, 'x')}) {
        writeFile(folder.path(), name, "contents");
        EXPECT_EQ(readFile(folder / name), "contents");
    }
    EXPECT_EQ(folder.names().size(), 7U);
}

TEST(Files, AreNeverWrittenThroughASymbolicLink) {
    TemporaryFolder const outer;
    std::string const folder = outer / "snapshots";
    std::filesystem::create_directory(folder);
    simulator::tests::writeFile(outer / "precious", "precious");
    std::filesystem::create_symlink(outer / "precious", folder + "/link.jpg");
    std::filesystem::create_symlink(outer / "absent", folder + "/dangling.jpg");
    EXPECT_THAT(refusal(folder, "link.jpg"), HasSubstr("no plain file"));
    EXPECT_THAT(refusal(folder, "dangling.jpg"), HasSubstr("no plain file"));
    EXPECT_EQ(readFile(outer / "precious"), "precious");
    EXPECT_FALSE(std::filesystem::exists(outer / "absent"));
}

TEST(Files, TakeThePlaceOfPlainFilesOnly) {
    TemporaryFolder const folder;
    writeFile(folder.path(), "a.jpg", "first");
    writeFile(folder.path(), "a.jpg", "second");
    EXPECT_EQ(readFile(folder / "a.jpg"), "second");
    std::filesystem::create_directory(folder / "directory");
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    EXPECT_THAT(refusal(folder.path(), "directory"), HasSubstr("no plain file"));
    EXPECT_THAT(refusal(folder.path(), "pipe"), HasSubstr("no plain file"));
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"a.jpg", "directory", "pipe"}));
}

TEST(Files, InAFolderThatIsGoneAreAnError) {
    TemporaryFolder const folder;
    EXPECT_THAT(refusal(folder / "gone", "a.jpg"), HasSubstr("cannot open the folder"));
}

TEST(Files, ThatCannotBeMadeAreAnError) {
    // Nobody makes files there, root neither.
    EXPECT_THAT(refusal("/proc/self", "a.jpg"),
                HasSubstr("cannot make a file in the folder \"/proc/self\": "));
}

TEST(Files, ThatDoNotFitLeaveNothingBehind) {
    TemporaryFolder const folder;
    writeFile(folder.path(), "a.jpg", "contents");
    {
        simulator::tests::NoRoom const no_room(10);
        EXPECT_THROW(writeFile(folder.path(), "a.jpg", "longer contents"), std::runtime_error);
    }
    EXPECT_EQ(folder.names(), std::vector<std::string>{"a.jpg"});
    EXPECT_EQ(simulator::tests::readFile(folder / "a.jpg"), "contents");
}

TEST(Files, AreForTheirOwnerOnly) {
    TemporaryFolder const folder;
    writeFile(folder.path(), "a.jpg", "contents");
    struct stat status {};
    ASSERT_EQ(::stat((folder / "a.jpg").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
}

}  // namespace simulator::runners::tests
