// SPDX-License-Identifier: Apache-2.0
#include "simulator/runners/mail.h"

#include <algorithm>
#include <stdexcept>

namespace simulator::runners {

namespace {

constexpr char const *line_end = "\r\n";

/// A value without line breaks and other control characters. It stays UTF-8, as RFC 6532 has it.
std::string headerValue(std::string_view text) {
    std::string value(text);
    std::replace_if(
        value.begin(), value.end(), [](unsigned char c) { return c < 0x20 || c == 0x7f; }, ' ');
    return value;
}

/// Servers take no lines of more than 998 bytes; longer ones go on in the next line, where there is a blank.
void addHeader(std::string &mail, char const *name, std::string_view value) {
    constexpr std::size_t longest = 900;
    std::string line = std::string(name) + ": " + headerValue(value);
    while (line.size() > longest) {
        std::size_t const blank = line.rfind(' ', longest);
        if (blank == std::string::npos || blank == 0) {
            break;
        }
        mail += line.substr(0, blank) + line_end;
        line.erase(0, blank);
    }
    mail += line + line_end;
}

std::string addressList(Texts const &addresses) {
    std::string list;
    for (std::string const &address : addresses) {
        list += (list.empty() ? "" : ", ") + address;
    }
    return list;
}

/// The text with the line ends of a message.
std::string lines(std::string_view text) {
    std::string made;
    for (std::size_t n = 0; n < text.size(); ++n) {
        bool const is_pair = text[n] == '\r' && n + 1 < text.size() && text[n + 1] == '\n';
        if (is_pair) {
            continue;
        }
        // One of the two alone ends a line as well: servers differ in what they take it for.
        if (text[n] == '\n' || text[n] == '\r') {
            made += line_end;
        } else {
            made += text[n];
        }
    }
    return made + line_end;
}

bool hasLongLine(std::string_view text) {
    constexpr std::size_t longest = 900;
    for (std::size_t begin = 0; begin < text.size();) {
        std::size_t const end = std::min(text.find('\n', begin), text.size());
        if (end - begin > longest) {
            return true;
        }
        begin = end + 1;
    }
    return false;
}

std::string base64(std::string_view bytes) {
    constexpr char const *digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    constexpr std::size_t bytes_a_line = 57;
    std::string text;
    for (std::size_t n = 0; n < bytes.size(); n += 3) {
        std::size_t const count = std::min<std::size_t>(3, bytes.size() - n);
        unsigned int group = 0;
        for (std::size_t k = 0; k < 3; ++k) {
            group = group << 8U | (k < count ? static_cast<unsigned char>(bytes[n + k]) : 0U);
        }
        for (std::size_t k = 0; k < 4; ++k) {
            text += k <= count ? digits[group >> (18U - 6U * k) & 63U] : '=';
        }
        if ((n + 3) % bytes_a_line == 0) {
            text += line_end;
        }
    }
    return text + line_end;
}

/// A line that the text does not hold.
std::string boundaryFor(std::string_view text) {
    std::string boundary = "picture-follows";
    for (unsigned int n = 0; text.find(boundary) != std::string_view::npos; ++n) {
        boundary = "picture-follows-" + std::to_string(n);
    }
    return boundary;
}

std::string dateText(std::time_t date) {
    std::tm utc{};
    gmtime_r(&date, &utc);
    constexpr char const *days[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    constexpr char const *months[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                      "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    char rest[32];
    std::strftime(rest, sizeof rest, "%Y %H:%M:%S +0000", &utc);
    return std::string(days[utc.tm_wday]) + ", " + std::to_string(utc.tm_mday) + " " + months[utc.tm_mon] +
           " " + rest;
}

}  // namespace

std::string composeMail(Job const &job, std::string_view picture, std::time_t date) {
    auto const &to = job.setting<Texts>("to_addresses");
    auto const &cc = job.setting<Texts>("cc_addresses");
    if (to.empty() && cc.empty()) {
        throw std::runtime_error("the mail has no recipient");
    }
    std::string body = lines(job.setting<std::string>("body"));
    if (job.setting<bool>("include_event")) {
        body += line_end + lines(job.cause);
    }

    std::string mail;
    addHeader(mail, "From", job.setting<std::string>("from_address"));
    if (!to.empty()) {
        addHeader(mail, "To", addressList(to));
    }
    if (!cc.empty()) {
        addHeader(mail, "Cc", addressList(cc));
    }
    addHeader(mail, "Subject", job.setting<std::string>("subject"));
    addHeader(mail, "Date", dateText(date));
    addHeader(mail, "X-Smtp-Server", job.setting<std::string>("smtp_server"));
    addHeader(mail, "MIME-Version", "1.0");

    bool const encoded = hasLongLine(body);
    std::string const text_part =
        std::string("Content-Type: text/plain; charset=utf-8\r\nContent-Transfer-Encoding: ") +
        (encoded ? "base64" : "8bit") + "\r\n\r\n" + (encoded ? base64(body) : body);
    if (!job.setting<bool>("attach_jpeg")) {
        return mail + text_part;
    }
    std::string const boundary = boundaryFor(body);
    addHeader(mail, "Content-Type", "multipart/mixed; boundary=\"" + boundary + "\"");
    return mail + "\r\n--" + boundary + "\r\n" + text_part + "--" + boundary +
           "\r\nContent-Type: image/jpeg\r\nContent-Transfer-Encoding: base64\r\n"
           "Content-Disposition: attachment; filename=\"snapshot.jpg\"\r\n\r\n" +
           base64(picture) + "--" + boundary + "--\r\n";
}

}  // namespace simulator::runners
