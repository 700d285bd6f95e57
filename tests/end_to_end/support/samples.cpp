// SPDX-License-Identifier: Apache-2.0
#include "support/samples.h"

#include <algorithm>

namespace end_to_end {

namespace {

constexpr char awkward_text[] =
    "\"quoted\" 'single' back\\slash \\\" \\u0041 sol/idus\n"
    "line\r\nbreaks\ttab\vand\fform\b\x01\x1f\x7f"
    "\xc3\xa4\xc3\xb6\xc3\xbc "              // two bytes each
    "\xe2\x82\xac\xe2\x80\xa8\xe6\x97\xa5 "  // three, a line separator among them
    "\xf0\x9f\x98\x80\xf4\x8f\xbf\xbf "      // four, the last code point among them
    "%s%n%d%% ../../etc/passwd {\"a\":[1,null]} ]}, \xef\xbb\xbf end ";

Text textOf(Flavour flavour, std::string const &mark) {
    constexpr std::size_t longest = 64 * 1024;
    switch (flavour) {
        case Flavour::plain:
        case Flavour::single:
            return "text " + mark;
        case Flavour::awkward:
            return mark + awkward_text + mark;
        case Flavour::empty:
            return "";
        case Flavour::largest:
            break;
    }
    Text text;
    while (text.size() < longest) {
        text += "0123456789 \xc3\xa4 " + mark + "; ";
    }
    // Not in the middle of a character.
    text.resize(longest - mark.size() - 32);
    text.resize(text.rfind(';'));
    return text + std::string(longest - text.size(), '.');
}

std::size_t entriesOf(Flavour flavour) {
    switch (flavour) {
        case Flavour::plain:
        case Flavour::awkward:
            return 3;
        case Flavour::empty:
            return 0;
        case Flavour::single:
            return 1;
        case Flavour::largest:
            break;
    }
    return 10'000;
}

Value valueOf(Kind kind, Flavour flavour, unsigned int seed, unsigned int place) {
    std::string const mark = std::to_string(seed) + "." + std::to_string(place);
    Flavour const element_flavour = flavour == Flavour::largest ? Flavour::plain : flavour;
    switch (kind) {
        case Kind::number:
            return flavour == Flavour::empty     ? 0
                   : flavour == Flavour::largest ? 4294967295U
                                                 : seed * 1000 + place;
        case Kind::flag:
            return static_cast<Flag>(flavour == Flavour::largest  ? 2
                                     : flavour == Flavour::empty  ? 0
                                     : flavour == Flavour::single ? 1
                                                                  : (seed + place) % 2);
        case Kind::text:
            return textOf(flavour, mark);
        case Kind::texts: {
            Texts texts;
            for (std::size_t n = 0; n < entriesOf(flavour); ++n) {
                texts.push_back(textOf(element_flavour, mark + "." + std::to_string(n)));
            }
            return texts;
        }
        case Kind::numbers:
            break;
    }
    Numbers numbers;
    for (std::size_t n = 0; n < entriesOf(flavour); ++n) {
        numbers.push_back(n % 3 == 0   ? 4294967295U
                          : n % 3 == 1 ? 0
                                       : static_cast<unsigned int>(n) + seed * 100'000 + place);
    }
    return numbers;
}

}  // namespace

char const *nameOf(Flavour flavour) {
    switch (flavour) {
        case Flavour::plain:
            return "plain";
        case Flavour::awkward:
            return "awkward";
        case Flavour::empty:
            return "empty";
        case Flavour::single:
            return "single";
        case Flavour::largest:
            return "largest";
    }
    return "";
}

Values sampleOf(std::vector<Kind> const &kinds, Flavour flavour, unsigned int seed) {
    Values values;
    unsigned int place = 0;
    for (Kind const kind : kinds) {
        values.push_back(valueOf(kind, flavour, seed, ++place));
    }
    return values;
}

Values readBack(Values values) {
    for (Value &value : values) {
        if (Flag *const flag = std::get_if<Flag>(&value)) {
            *flag = *flag != 0 ? 1 : 0;
        }
    }
    return values;
}

Values operator+(unsigned int id, Values const &others) {
    Values all{id};
    all.insert(all.end(), others.begin(), others.end());
    return all;
}

}  // namespace end_to_end
