// SPDX-License-Identifier: Apache-2.0
#include "tool/markup.h"

namespace tool {

std::string escaped(std::string const &text) {
    std::string result;
    for (char const character : text) {
        switch (character) {
            case '&':
                result += "&amp;";
                break;
            case '<':
                result += "&lt;";
                break;
            case '>':
                result += "&gt;";
                break;
            case '"':
                result += "&quot;";
                break;
            case '\'':
                result += "&#39;";
                break;
            case '\n':
                result += "&#10;";
                break;
            default:
                result += character;
        }
    }
    return result;
}

}  // namespace tool
