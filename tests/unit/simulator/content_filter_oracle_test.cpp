// SPDX-License-Identifier: Apache-2.0
// Content filters are XPath. Generated filters and messages are put to libxml2's XPath as well, and the two must agree.

#include <gtest/gtest.h>
#include <libxml/parser.h>
#include <libxml/xpath.h>
#include <libxml/xpathInternals.h>

#include <cstdlib>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "simulator/onvif/content_filter.h"

namespace simulator::onvif::tests {

namespace {

constexpr char const *schema = "http://www.onvif.org/ver10/schema";

class Generator {
  public:
    explicit Generator(unsigned int seed) : random_(seed) {}

    std::string filter(int depth = 3) {
        return expression(depth, [this] { return condition(); });
    }

    std::string message() {
        // The schema's prefix, another one for it, and an element of another namespace around some of it.
        std::string const prefix = pick({"tt:", "s:", ""});
        std::string text = "<" + prefix + "Message xmlns:tt=\"" + schema + "\" xmlns:s=\"" + schema +
                           "\" xmlns:o=\"urn:other\"" +
                           (prefix.empty() ? std::string(" xmlns=\"") + schema + "\"" : "") + ">";
        for (int n = number(6); n > 0; --n) {
            text += block(2);
        }
        return text + "</" + prefix + "Message>";
    }

  private:
    int number(int end) { return std::uniform_int_distribution<int>(0, end - 1)(random_); }

    std::string pick(std::vector<char const *> const &texts) {
        return texts[static_cast<std::size_t>(number(static_cast<int>(texts.size())))];
    }

    std::string blank() { return pick({"", "", "", " ", "\n", "\t "}); }

    template <typename Leaf>
    std::string expression(int depth, Leaf leaf) {
        int const choice = depth == 0 ? 0 : number(6);
        switch (choice) {
            case 1:
                return "not(" + blank() + expression(depth - 1, leaf) + blank() + ")";
            case 2:
                return "(" + expression(depth - 1, leaf) + ")" + blank();
            case 3:
            case 4: {
                std::string text = expression(depth - 1, leaf);
                for (int n = 1 + number(3); n > 0; --n) {
                    text += pick({" and ", " or ", "\nand ", " or\t"}) + expression(depth - 1, leaf);
                }
                return text;
            }
            default:
                return leaf();
        }
    }

    std::string condition() {
        return "boolean(" + blank() + "//" + pick({"tt:SimpleItem", "tt:SimpleItem", "tt:ElementItem"}) +
               blank() + "[" + expression(2, [this] { return test(); }) + "]" + blank() + ")";
    }

    std::string test() {
        return "@" + pick({"Name", "Value"}) + blank() + "=" + blank() + "\"" +
               pick({"", "a", "b", "c", "true", "<&'>", "\u20ac", " a", "a b"}) + "\"";
    }

    std::string block(int depth) {
        if (depth > 0 && number(4) == 0) {
            std::string const name = pick({"tt:Data", "o:Data", "s:Source", "Data"});
            std::string const declared =
                number(4) == 0 ? std::string(" xmlns:s=\"urn:other\"") : std::string();
            std::string text = "<" + name + declared + ">";
            for (int n = number(4); n > 0; --n) {
                text += block(depth - 1);
            }
            return text + "</" + name + ">";
        }
        std::string const name = pick({"tt:SimpleItem", "tt:SimpleItem", "tt:ElementItem", "s:SimpleItem",
                                       "o:SimpleItem", "SimpleItem"});
        std::string text = "<" + name;
        if (number(6) != 0) {
            text += " Name=\"" + value() + "\"";
        }
        if (number(6) != 0) {
            text += " Value='" + value() + "'";
        }
        return text + (number(2) == 0 ? "/>" : "><x/>text</" + name + ">");
    }

    std::string value() {
        return pick(
            {"", "a", "b", "c", "true", "&lt;&amp;&apos;>", "\u20ac", "&#x20ac;", " a", "a\nb", "&#97;"});
    }

    std::mt19937 random_;
};

struct FreeDocument {
    void operator()(xmlDoc *document) const { xmlFreeDoc(document); }
};
struct FreeContext {
    void operator()(xmlXPathContext *context) const { xmlXPathFreeContext(context); }
};
struct FreeExpression {
    void operator()(xmlXPathCompExpr *expression) const { xmlXPathFreeCompExpr(expression); }
};

xmlChar const *asXml(std::string const &text) {
    return reinterpret_cast<xmlChar const *>(text.c_str());
}

/// How many batches of 100 filters and 100 messages; more on demand.
int batches() {
    char const *const wanted = std::getenv("KORVO_ORACLE_BATCHES");
    return wanted == nullptr ? 5 : std::atoi(wanted);
}

}  // namespace

TEST(ContentFilter, AgreesWithXPath) {
    constexpr int batch = 100;
    Namespaces const namespaces{{"tt"}, {schema}};
    unsigned long long taken = 0;
    unsigned long long pairs = 0;
    for (int round = 0; round < batches(); ++round) {
        Generator generator(static_cast<unsigned int>(round));
        std::vector<std::string> texts;
        std::vector<Message> messages;
        std::vector<std::unique_ptr<xmlDoc, FreeDocument>> documents;
        for (int n = 0; n < batch; ++n) {
            texts.push_back(generator.message());
            messages.emplace_back(texts.back(), namespaces);
            documents.emplace_back(xmlReadMemory(texts.back().data(), static_cast<int>(texts.back().size()),
                                                 "message", "UTF-8", XML_PARSE_NONET));
            ASSERT_NE(documents.back(), nullptr) << texts.back();
        }
        for (int n = 0; n < batch; ++n) {
            std::string const text = generator.filter();
            ContentFilter const filter(text, namespaces);
            std::unique_ptr<xmlXPathCompExpr, FreeExpression> const expression(xmlXPathCompile(asXml(text)));
            ASSERT_NE(expression, nullptr) << text;
            for (int m = 0; m < batch; ++m) {
                auto const place = static_cast<std::size_t>(m);
                std::unique_ptr<xmlXPathContext, FreeContext> const context(
                    xmlXPathNewContext(documents[place].get()));
                xmlXPathRegisterNs(context.get(), asXml("tt"), asXml(schema));
                int const expected = xmlXPathCompiledEvalToBoolean(expression.get(), context.get());
                ASSERT_EQ(filter.matches(messages[place]), expected == 1) << text << "\n" << texts[place];
                taken += static_cast<unsigned int>(expected);
                ++pairs;
            }
        }
    }
    // Neither answer is rare, or this would say little.
    EXPECT_GT(taken, pairs / 5);
    EXPECT_LT(taken, pairs * 4 / 5);
}

}  // namespace simulator::onvif::tests
