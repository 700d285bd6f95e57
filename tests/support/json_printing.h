// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_JSON_PRINTING_H
#define KORVO_TESTS_JSON_PRINTING_H

// How GoogleTest shows values of the JSON model when a comparison fails.

#include <ostream>

#include "json/json.h"

namespace json {

class Printer : public ConstVisitor {
  public:
    explicit Printer(std::ostream &out) : out_(out) {}

    void Visit(Object const &object) override {
        char const *separator = "{";
        for (Object::Member const &member : object) {
            out_ << separator << '"' << member.name << "\": ";
            member.element.Accept(*this);
            separator = ", ";
        }
        out_ << (object.empty() ? "{}" : "}");
    }
    void Visit(Array const &array) override {
        char const *separator = "[";
        for (UnknownElement const &element : array) {
            out_ << separator;
            element.Accept(*this);
            separator = ", ";
        }
        out_ << (array.empty() ? "[]" : "]");
    }
    void Visit(String const &text) override { out_ << '"' << text.value() << '"'; }
    void Visit(Number const &number) override { out_ << number.value(); }
    void Visit(Boolean const &flag) override { out_ << (flag.value() ? "true" : "false"); }
    void Visit(Null const &) override { out_ << "null"; }

  private:
    std::ostream &out_;
};

inline void PrintTo(Object const &object, std::ostream *out) {
    Printer(*out).Visit(object);
}

inline void PrintTo(Array const &array, std::ostream *out) {
    Printer(*out).Visit(array);
}

inline void PrintTo(Object::Member const &member, std::ostream *out) {
    *out << member.name << ": ";
    Printer printer(*out);
    member.element.Accept(printer);
}

inline void PrintTo(UnknownElement const &element, std::ostream *out) {
    Printer printer(*out);
    element.Accept(printer);
}

}  // namespace json

#endif
