// SPDX-License-Identifier: Apache-2.0
#include "element_memory.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <new>
#include <string>
#include <thread>
#include <vector>

#include "json_reader.h"
#include "live_blocks/live_blocks.h"

namespace {

/// What a number takes of a block.
constexpr std::size_t number_size = 8 + 16;

std::string listText(std::size_t count) {
    std::string text = "{\"list\":[0";
    for (std::size_t number = 1; number < count; ++number) {
        text += "," + std::to_string(number);
    }
    return text + "]}";
}

json::Object objectOf(std::string const &text) {
    json::Object object;
    EXPECT_EQ(json_text::read(text, object), "");
    return object;
}

/// The sizes of the blocks that code leaves behind; they stay.
template <typename Code>
std::vector<std::size_t> heldBy(Code const &code) {
    live_blocks::Recording recording;
    code();
    std::vector<std::size_t> sizes;
    for (live_blocks::Block const &block : recording.end()) {
        sizes.push_back(block.size);
    }
    return sizes;
}

}  // namespace

TEST(ElementMemory, MakesElementsWithTheirValues) {
    std::unique_ptr<json::UnknownElement> number;
    std::unique_ptr<json::UnknownElement> text;
    std::unique_ptr<json::UnknownElement> array;
    {
        json_text::ElementMemory memory;
        number = std::make_unique<json::UnknownElement>(memory.make<json::Number>(2.5));
        text = std::make_unique<json::UnknownElement>(memory.make<json::String>("longer than a text inside"));
        array = std::make_unique<json::UnknownElement>(memory.make<json::Array>());
    }
    // They do not need what made them.
    array->ConvertTo<json::Array>().Insert(*number);
    EXPECT_EQ(number->CastTo<json::Number>().value(), 2.5);
    EXPECT_EQ(text->CastTo<json::String>().value(), "longer than a text inside");
    EXPECT_EQ(array->CastTo<json::Array>().begin()->CastTo<json::Number>().value(), 2.5);
    *number = json::Boolean(true);
    EXPECT_TRUE(number->CastTo<json::Boolean>().value());
}

TEST(ElementMemory, MakesElementsThatNeedAsMuchRoomAsTheyTake) {
    json_text::ElementMemory memory;
    std::vector<std::unique_ptr<json::UnknownElement>> elements;
    for (int round = 0; round < 300; ++round) {
        elements.push_back(std::make_unique<json::UnknownElement>(memory.make<json::Boolean>(true)));
        elements.push_back(std::make_unique<json::UnknownElement>(memory.make<json::Array>()));
        elements.push_back(std::make_unique<json::UnknownElement>(memory.make<json::Number>(round)));
        elements.push_back(std::make_unique<json::UnknownElement>(memory.make<json::Object>()));
    }
    for (std::size_t place = 0; place < elements.size(); place += 4) {
        EXPECT_TRUE(elements[place]->CastTo<json::Boolean>().value());
        EXPECT_TRUE(elements[place + 1]->CastTo<json::Array>().empty());
        EXPECT_EQ(elements[place + 2]->CastTo<json::Number>().value(), static_cast<double>(place / 4));
        EXPECT_TRUE(elements[place + 3]->CastTo<json::Object>().empty());
    }
}

TEST(ElementMemory, TakesOneAllocationForManyElements) {
    constexpr std::size_t count = 10000;
    std::string const text = listText(count);
    live_blocks::Recording recording;
    objectOf(text);
    std::size_t const allocations = recording.allocations();
    EXPECT_TRUE(recording.end().empty());
    // Beside the elements the array has blocks of its own, for 64 elements each (128 where a pointer has four bytes).
    std::size_t const blocks = count * number_size / (json_text::ElementMemory::block_size - 100);
    EXPECT_LT(allocations, blocks + count / 64 + 40);
}

TEST(ElementMemory, IsHeldByElementsThatStayAndNotByCopies) {
    std::string const text = listText(10000);
    json::UnknownElement kept;
    EXPECT_EQ(heldBy([&] {
                  json::Object object = objectOf(text);
                  kept = std::move(*object["list"].ConvertTo<json::Array>().begin());
              }),
              std::vector<std::size_t>{json_text::ElementMemory::block_size});
    EXPECT_EQ(kept.CastTo<json::Number>().value(), 0);
    json::UnknownElement copied;
    // The copy's own block.
    EXPECT_EQ(heldBy([&] {
                  json::Object const object = objectOf(text);
                  copied = object["list"].CastTo<json::Array>().begin()[42];
              }),
              std::vector<std::size_t>{16});
    EXPECT_EQ(copied.CastTo<json::Number>().value(), 42);
}

TEST(ElementMemory, IsFreedByWhicheverThreadsDeleteTheElements) {
    // Neighbours in memory, so that threads meet in every block.
    constexpr std::size_t threads = 4;
    std::string const text = listText(1000);
    std::vector<std::size_t> const left = heldBy([&] {
        std::vector<std::vector<json::UnknownElement>> shares(threads,
                                                              std::vector<json::UnknownElement>(250));
        json::Object object = objectOf(text);
        std::size_t place = 0;
        for (json::UnknownElement &element : object["list"].ConvertTo<json::Array>()) {
            shares[place % threads][place / threads] = std::move(element);
            ++place;
        }
        // A sanitizer keeps what belongs to a thread beyond its end.
        live_blocks::Unnoticed const unnoticed;
        std::vector<std::thread> workers;
        for (std::vector<json::UnknownElement> &share : shares) {
            workers.emplace_back([&share] { share.clear(); });
        }
        for (std::thread &worker : workers) {
            worker.join();
        }
    });
    EXPECT_TRUE(left.empty());
}

TEST(ElementMemory, IsFreedWhenAReaderGivesUp) {
    for (std::string const text : {"{\"a\":[1,2,[3,{\"b\":4}]],\"a\":5}", "{\"a\":[1,2,[3,{\"b\":4",
                                   "{\"a\":[1,2,1e999]}", "[1]", ""}) {
        EXPECT_TRUE(heldBy([&] {
                        json::Object object;
                        EXPECT_NE(json_text::read(text, object), "");
                    }).empty())
            << text;
    }
}

TEST(ElementMemory, IsFreedWhereverMemoryRunsOut) {
    if (!live_blocks::canFail()) {
        GTEST_SKIP() << "allocations cannot be made to fail under this sanitizer";
    }
    std::string const text =
        "{\"list\":[1,2,\"a text that needs a block of its own\"],\"object\":{\"a\":null},"
        "\"a name that needs a block of its own\":true,\"more\":" +
        listText(200) + "}";
    bool failed = true;
    std::size_t nth = 0;
    EXPECT_TRUE(heldBy([&] {
                    while (failed && nth < 1000) {
                        json::Object object;
                        failed = live_blocks::failNth(++nth, [&] {
                            try {
                                EXPECT_EQ(json_text::read(text, object), "");
                            } catch (std::bad_alloc const &) {
                            }
                        });
                    }
                }).empty());
    EXPECT_FALSE(failed);
    EXPECT_GT(nth, 10U);
}
