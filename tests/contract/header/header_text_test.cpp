// SPDX-License-Identifier: Apache-2.0
#include "header/header_text.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

using header_text::Declaration;

TEST(HeaderText, ReadsAFunctionWithItsCommentParametersAndMacros) {
    header_text::Header const header = header_text::parse(
        "/* The licence */\n/* The opening */\n#include \"a.h\"\nextern \"C\" {\n"
        "/*\n * What it\n *   does.\n */\n"
        "KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status\nmake(char const *target, unsigned int\n "
        "***out,int timeout) "
        "KORVO_API_NOEXCEPT;\nvoid stop(void);\n}\n");
    EXPECT_EQ(header.opening, " The opening\n");
    EXPECT_EQ(header.includes, std::vector<std::string>{"\"a.h\""});
    ASSERT_EQ(header.declarations.size(), 2U);
    Declaration const &make = header.declarations[0];
    EXPECT_EQ(make.what, Declaration::What::function);
    EXPECT_EQ(make.name, "make");
    EXPECT_EQ(make.result, "korvo_core_status");
    EXPECT_TRUE(make.exported);
    EXPECT_TRUE(make.no_throw);
    EXPECT_EQ(header_text::toString(make.parameters), "char const *target, unsigned int ***out, int timeout");
    EXPECT_EQ(make.comment, "\nWhat it\n  does.\n\n");
    Declaration const &stop = header.declarations[1];
    EXPECT_EQ(stop.name, "stop");
    EXPECT_FALSE(stop.exported);
    EXPECT_FALSE(stop.no_throw);
    EXPECT_TRUE(stop.parameters.empty());
    EXPECT_EQ(stop.comment, "");
}

TEST(HeaderText, ReadsACallbackTypeAndLeavesEnumerationsAsTheyStand) {
    header_text::Header const header = header_text::parse(
        "enum E { a = 1, /* one; */ b };\ntypedef void (*call)(char *target, void *context);\n");
    ASSERT_EQ(header.declarations.size(), 2U);
    EXPECT_EQ(header.declarations[0].what, Declaration::What::other);
    EXPECT_EQ(header.declarations[0].text, "enum E { a = 1, b }");
    EXPECT_EQ(header.declarations[1].what, Declaration::What::callback_type);
    EXPECT_EQ(header.declarations[1].name, "call");
    EXPECT_EQ(header_text::toString(header.declarations[1].parameters), "char *target, void *context");
}

TEST(HeaderText, RefusesWhatItCannotRead) {
    EXPECT_THROW(header_text::parse("/* no end"), std::runtime_error);
    EXPECT_THROW(header_text::parse("int f(void)"), std::runtime_error);
    EXPECT_THROW(header_text::parse("int f(int);"), std::runtime_error);
    EXPECT_THROW(header_text::readFile("/nowhere/at/all.h"), std::runtime_error);
}

}  // namespace
