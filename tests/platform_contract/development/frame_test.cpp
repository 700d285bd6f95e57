// SPDX-License-Identifier: Apache-2.0
#include "messaging/frame.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

using platform::frame::append;
using platform::frame::Decoder;
using platform::frame::fits;
using platform::frame::Frame;
using platform::frame::Type;

namespace {

constexpr std::size_t largest_payload = 1048576;

/// Hands bytes over, as many at a time as the decoder has room for.
void feed(Decoder &decoder, std::string_view bytes) {
    while (!bytes.empty()) {
        Decoder::Space const space = decoder.space();
        ASSERT_GT(space.size, 0U);
        std::size_t const count = std::min(space.size, bytes.size());
        std::memcpy(space.begin, bytes.data(), count);
        decoder.filled(count);
        bytes.remove_prefix(count);
    }
}

Decoder::Result resultOf(std::string_view bytes) {
    Decoder decoder;
    feed(decoder, bytes);
    Frame frame;
    return decoder.next(frame);
}

std::string header(char type, unsigned char length0, unsigned char length1, unsigned char length2,
                   unsigned char length3) {
    return {'K',
            'V',
            1,
            type,
            static_cast<char>(length0),
            static_cast<char>(length1),
            static_cast<char>(length2),
            static_cast<char>(length3)};
}

}  // namespace

TEST(FrameEncoding, IsAHeaderAndTextsWithTheirLengths) {
    std::string bytes;
    append(bytes, Type::command, "ab", "c");
    EXPECT_EQ(bytes, std::string("KV\x01\x01\x0b\0\0\0"
                                 "\x02\0\0\0ab"
                                 "\x01\0\0\0c",
                                 19));
    bytes.clear();
    append(bytes, Type::subscribe);
    EXPECT_EQ(bytes, std::string("KV\x01\x04\0\0\0\0", 8));
}

TEST(FrameDecoder, ReadsWhatWasEncoded) {
    std::string bytes;
    append(bytes, Type::response, "identifier", "{\"status\":0}");
    append(bytes, Type::event, "", "");
    append(bytes, Type::unsubscribe);
    Decoder decoder;
    feed(decoder, bytes);
    Frame frame;
    ASSERT_EQ(decoder.next(frame), Decoder::Result::frame);
    EXPECT_EQ(frame.type, Type::response);
    EXPECT_EQ(frame.first, "identifier");
    EXPECT_EQ(frame.second, "{\"status\":0}");
    ASSERT_EQ(decoder.next(frame), Decoder::Result::frame);
    EXPECT_EQ(frame.type, Type::event);
    EXPECT_EQ(frame.first, "");
    EXPECT_EQ(frame.second, "");
    ASSERT_EQ(decoder.next(frame), Decoder::Result::frame);
    EXPECT_EQ(frame.type, Type::unsubscribe);
    EXPECT_EQ(decoder.next(frame), Decoder::Result::incomplete);
}

TEST(FrameDecoder, ReadsFramesThatComeByteByByte) {
    std::string bytes;
    append(bytes, Type::command, "id", "text");
    append(bytes, Type::command, "other", "more text");
    Decoder decoder;
    std::string seen;
    for (char const byte : bytes) {
        feed(decoder, {&byte, 1});
        Frame frame;
        if (decoder.next(frame) == Decoder::Result::frame) {
            seen += std::string(frame.first) + "=" + std::string(frame.second) + ";";
        }
    }
    EXPECT_EQ(seen, "id=text;other=more text;");
}

TEST(FrameDecoder, ReadsManyFramesOfEverySizeInOneStream) {
    std::string bytes;
    for (std::size_t size = 0; size < 300000; size = size * 3 / 2 + 1) {
        append(bytes, Type::command, std::to_string(size), std::string(size, 'x'));
    }
    Decoder decoder;
    std::size_t expected = 0;
    std::size_t place = 0;
    while (place < bytes.size()) {
        std::size_t const count = std::min<std::size_t>(bytes.size() - place, 7777);
        feed(decoder, std::string_view(bytes).substr(place, count));
        place += count;
        Frame frame;
        while (decoder.next(frame) == Decoder::Result::frame) {
            EXPECT_EQ(frame.first, std::to_string(expected));
            EXPECT_EQ(frame.second, std::string(expected, 'x'));
            expected = expected * 3 / 2 + 1;
        }
    }
    EXPECT_GE(expected, 300000U);
}

TEST(FrameDecoder, TakesThePayloadThatJustFits) {
    std::string const text(largest_payload - 8 - 2, 'x');
    EXPECT_TRUE(fits("id", text));
    std::string bytes;
    append(bytes, Type::command, "id", text);
    Decoder decoder;
    feed(decoder, bytes);
    Frame frame;
    ASSERT_EQ(decoder.next(frame), Decoder::Result::frame);
    EXPECT_EQ(frame.second.size(), text.size());
}

TEST(FrameDecoder, KnowsWhatDoesNotFit) {
    EXPECT_FALSE(fits("id", std::string(largest_payload - 8 - 1, 'x')));
    EXPECT_FALSE(fits(std::string(largest_payload, 'x'), std::string(largest_payload, 'x')));
}

TEST(FrameDecoder, RefusesAnAnnouncedLengthAboveTheBoundAtOnce) {
    EXPECT_EQ(resultOf(header(1, 0, 0, 0x10, 0)), Decoder::Result::incomplete);
    EXPECT_EQ(resultOf(header(1, 1, 0, 0x10, 0)), Decoder::Result::broken);
    EXPECT_EQ(resultOf(header(1, 0xff, 0xff, 0xff, 0xff)), Decoder::Result::broken);
}

TEST(FrameDecoder, AsksForNoMoreRoomThanHasBeenFilled) {
    Decoder decoder;
    feed(decoder, header(1, 0, 0, 0x10, 0));
    Frame frame;
    ASSERT_EQ(decoder.next(frame), Decoder::Result::incomplete);
    EXPECT_LE(decoder.space().size, 65536U);
}

TEST(FrameDecoder, GivesTheRoomOfALargeFrameBack) {
    std::string bytes;
    append(bytes, Type::command, "id", std::string(1000000, 'x'));
    Decoder decoder;
    feed(decoder, bytes);
    Frame frame;
    ASSERT_EQ(decoder.next(frame), Decoder::Result::frame);
    EXPECT_LE(decoder.space().size, 65536U);
}

TEST(FrameDecoder, RefusesAWrongBeginVersionOrType) {
    EXPECT_EQ(resultOf(std::string("XV\x01\x01\0\0\0\0", 8)), Decoder::Result::broken);
    EXPECT_EQ(resultOf(std::string("KX\x01\x01\0\0\0\0", 8)), Decoder::Result::broken);
    EXPECT_EQ(resultOf(std::string("KV\x02\x01\0\0\0\0", 8)), Decoder::Result::broken);
    EXPECT_EQ(resultOf(header(0, 0, 0, 0, 0)), Decoder::Result::broken);
    EXPECT_EQ(resultOf(header(6, 0, 0, 0, 0)), Decoder::Result::broken);
    EXPECT_EQ(resultOf(header(static_cast<char>(0xff), 0, 0, 0, 0)), Decoder::Result::broken);
}

TEST(FrameDecoder, RefusesTextsThatDoNotFillThePayloadExactly) {
    // No room for a length, a length beyond the end, and something behind the last text.
    EXPECT_EQ(resultOf(header(1, 3, 0, 0, 0) + std::string(3, '\0')), Decoder::Result::broken);
    EXPECT_EQ(resultOf(header(1, 8, 0, 0, 0) + std::string("\x05\0\0\0\0\0\0\0", 8)),
              Decoder::Result::broken);
    EXPECT_EQ(resultOf(header(1, 8, 0, 0, 0) + std::string("\xff\xff\xff\xff\0\0\0\0", 8)),
              Decoder::Result::broken);
    EXPECT_EQ(resultOf(header(1, 9, 0, 0, 0) + std::string(9, '\0')), Decoder::Result::broken);
    EXPECT_EQ(resultOf(header(4, 1, 0, 0, 0) + std::string(1, '\0')), Decoder::Result::broken);
}

TEST(FrameDecoder, RefusesTextsWithAZeroByte) {
    EXPECT_EQ(resultOf(header(1, 9, 0, 0, 0) + std::string("\0\0\0\0\x01\0\0\0\0", 9)),
              Decoder::Result::broken);
}

TEST(FrameDecoder, StaysBroken) {
    Decoder decoder;
    feed(decoder, "this is no frame");
    std::string good;
    append(good, Type::subscribe);
    feed(decoder, good);
    Frame frame;
    EXPECT_EQ(decoder.next(frame), Decoder::Result::broken);
    EXPECT_EQ(decoder.next(frame), Decoder::Result::broken);
    EXPECT_NE(decoder.problem(), nullptr);
}
