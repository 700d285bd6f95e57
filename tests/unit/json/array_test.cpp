// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "json/json.h"
#include "json_printing.h"

TEST(JsonArray, KeepsElementsInTheOrderOfInsertion) {
    json::Array array;
    for (int value = 0; value < 1000; ++value) {
        json::Array::iterator const place = array.Insert(json::Number(value));
        EXPECT_EQ(*place, json::UnknownElement(json::Number(value)));
    }
    EXPECT_EQ(array.size(), 1000U);
    double expected = 0;
    json::Array const &read_only = array;
    for (json::UnknownElement const &element : read_only) {
        EXPECT_EQ(element.CastTo<json::Number>().value(), expected);
        ++expected;
    }
    EXPECT_EQ(expected, 1000);
}

TEST(JsonArray, HoldsElementsOfDifferentTypes) {
    json::Array array;
    array.Insert(json::String("a"));
    array.Insert(json::Null());
    EXPECT_EQ(array.Emplace(json::Array()), json::UnknownElement(json::Array()));
    EXPECT_EQ(array.size(), 3U);
    EXPECT_EQ(array.begin()->CastTo<json::String>().value(), "a");
    EXPECT_THROW((void)array.begin()->CastTo<json::Number>(), json::Exception);
}

TEST(JsonArray, InsertsACopy) {
    json::UnknownElement element = json::String("before");
    json::Array array;
    array.Insert(element);
    element = json::String("after");
    EXPECT_EQ(*array.begin(), json::UnknownElement(json::String("before")));
}

TEST(JsonArray, CopiesDeeplyAndComparesByValue) {
    json::Array inner;
    inner.Insert(json::Number(1));
    json::Array array;
    array.Insert(inner);
    json::Array const copy = array;
    EXPECT_EQ(copy, array);
    array.begin()->ConvertTo<json::Array>().Insert(json::Number(2));
    EXPECT_NE(copy, array);
    EXPECT_EQ(copy.begin()->CastTo<json::Array>().size(), 1U);
    EXPECT_NE(json::Array(), copy);
    EXPECT_EQ(json::Array(), json::Array());
    EXPECT_TRUE(json::Array().empty());
    EXPECT_FALSE(copy.empty());
}
