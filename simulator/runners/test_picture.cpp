// SPDX-License-Identifier: Apache-2.0
#include "simulator/runners/test_picture.h"

#include <algorithm>
#include <csetjmp>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <stdexcept>

// jpeglib.h uses FILE and size_t without including what declares them.
#include <jpeglib.h>

namespace simulator::runners {

namespace {

struct Colour {
    unsigned char red;
    unsigned char green;
    unsigned char blue;
};

constexpr Colour bars[] = {{235, 235, 235}, {235, 235, 16}, {16, 235, 235}, {16, 235, 16},
                           {235, 16, 235},  {235, 16, 16},  {16, 16, 235},  {16, 16, 16}};
constexpr Colour block = {255, 255, 255};

struct ErrorManager {
    jpeg_error_mgr base;
    std::jmp_buf escape;
    char text[JMSG_LENGTH_MAX];
};

void escape(j_common_ptr encoder) {
    auto *const manager = reinterpret_cast<ErrorManager *>(encoder->err);
    manager->base.format_message(encoder, manager->text);
    std::longjmp(manager->escape, 1);
}

void ignore(j_common_ptr) {}

/// The encoder leaves by longjmp when it fails, so nothing here has a destructor. It writes into the buffer, which is
/// `size` bytes long, or, when that is too short, into one of its own that takes its place.
bool encode(Picture const &picture, unsigned char *&buffer, unsigned long &size, ErrorManager &errors) {
    jpeg_compress_struct encoder{};
    encoder.err = jpeg_std_error(&errors.base);
    errors.base.error_exit = escape;
    errors.base.output_message = ignore;
    if (setjmp(errors.escape) != 0) {
        jpeg_destroy_compress(&encoder);
        return false;
    }
    jpeg_create_compress(&encoder);
    jpeg_mem_dest(&encoder, &buffer, &size);
    encoder.image_width = picture.width;
    encoder.image_height = picture.height;
    encoder.input_components = 3;
    encoder.in_color_space = JCS_RGB;
    jpeg_set_defaults(&encoder);
    jpeg_set_quality(&encoder, /*quality*/ 85, /*force_baseline*/ TRUE);
    jpeg_start_compress(&encoder, /*write_all_tables*/ TRUE);
    while (encoder.next_scanline < encoder.image_height) {
        std::size_t const offset = std::size_t{encoder.next_scanline} * picture.width * 3;
        JSAMPROW row = const_cast<JSAMPROW>(picture.pixels.data() + offset);
        jpeg_write_scanlines(&encoder, &row, 1);
    }
    jpeg_finish_compress(&encoder);
    jpeg_destroy_compress(&encoder);
    return true;
}

}  // namespace

Picture drawTestPicture(unsigned int width, unsigned int height, std::chrono::milliseconds time) {
    constexpr unsigned int crossing_ms = 10'000;
    Picture picture{width, height, {}};
    picture.pixels.reserve(std::size_t{width} * height * 3);
    unsigned int const side = std::min(width, height) / 4;
    auto const phase = static_cast<unsigned int>(time.count() % std::int64_t{crossing_ms});
    unsigned int const left = (width - side) * phase / crossing_ms;
    unsigned int const top = (height - side) / 2;
    for (unsigned int y = 0; y < height; ++y) {
        for (unsigned int x = 0; x < width; ++x) {
            bool const in_block = left <= x && x < left + side && top <= y && y < top + side;
            Colour const colour = in_block ? block : bars[x * std::size(bars) / width];
            picture.pixels.insert(picture.pixels.end(), {colour.red, colour.green, colour.blue});
        }
    }
    return picture;
}

std::string encodeJpeg(Picture const &picture) {
    // Longer than any picture of this size becomes, tables and all.
    std::string buffer(picture.pixels.size() + 4096, '\0');
    auto *const start = reinterpret_cast<unsigned char *>(buffer.data());
    unsigned char *bytes = start;
    unsigned long size = buffer.size();
    auto const errors = std::make_unique<ErrorManager>();
    if (!encode(picture, bytes, size, *errors)) {
        throw std::runtime_error(std::string("cannot encode the picture: ") + errors->text);
    }
    if (bytes != start) {
        buffer.assign(reinterpret_cast<char const *>(bytes), size);
        std::free(bytes);
    }
    buffer.resize(size);
    return buffer;
}

std::string takeSnapshot(Wall moment) {
    auto const time = std::chrono::duration_cast<std::chrono::milliseconds>(moment.time_since_epoch());
    return encodeJpeg(drawTestPicture(320, 240, time));
}

}  // namespace simulator::runners
