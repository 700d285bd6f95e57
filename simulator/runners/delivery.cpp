// SPDX-License-Identifier: Apache-2.0
#include "simulator/runners/delivery.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <stdexcept>
#include <utility>

#include "simulator/log.h"
#include "simulator/runners/mail.h"

namespace simulator::runners {

namespace {

bool isControl(char c) {
    return static_cast<unsigned char>(c) < 0x20 || c == 0x7f;
}

bool hasAnyOf(std::string_view text, std::string_view unwanted) {
    return text.find_first_of(unwanted) != std::string_view::npos ||
           std::any_of(text.begin(), text.end(), isControl);
}

bool isHostCharacter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '.' ||
           c == '-' || c == '_';
}

bool isPort(std::string_view text) {
    std::uint16_t port = 0;
    auto const read = std::from_chars(text.data(), text.data() + text.size(), port);
    return read.ec == std::errc() && read.ptr == text.data() + text.size() && port != 0;
}

bool isHost(std::string_view text) {
    if (text.size() > 2 && text.front() == '[' && text.back() == ']') {
        return text.find_first_not_of("0123456789abcdefABCDEF:.", 1) == text.size() - 1;
    }
    constexpr std::size_t longest = 253;
    return !text.empty() && text.size() <= longest && text.front() != '-' && text.front() != '.' &&
           std::all_of(text.begin(), text.end(), isHostCharacter);
}

/// A text as part of a URL's path.
void appendEscaped(std::string &url, std::string_view text) {
    constexpr char const *digits = "0123456789ABCDEF";
    for (char const c : text) {
        if (isHostCharacter(c)) {
            url += c;
        } else {
            auto const byte = static_cast<unsigned char>(c);
            url += {'%', digits[byte >> 4U], digits[byte & 15U]};
        }
    }
}

void refuseControls(char const *what, std::string const &text) {
    if (hasAnyOf(text, "")) {
        throw std::runtime_error(std::string("its ") + what + " " + quoted(text) +
                                 " has a control character");
    }
}

}  // namespace

Server readServer(std::string const &text) {
    std::size_t const colon = text.rfind(':');
    // Colons within brackets belong to the address.
    bool const with_port = colon != std::string::npos && text.find(']', colon) == std::string::npos;
    std::string host = text.substr(0, with_port ? colon : text.size());
    if (!isHost(host) || (with_port && !isPort(std::string_view(text).substr(colon + 1)))) {
        throw std::runtime_error("the server " + quoted(text) +
                                 " is no name or address, with a port behind a colon or without");
    }
    std::transform(host.begin(), host.end(), host.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return {text, std::move(host)};
}

std::string readMailAddress(std::string const &text) {
    std::string_view address = text;
    std::string_view name;
    std::size_t const open = text.find('<');
    if (open != std::string::npos && text.back() == '>') {
        name = address.substr(0, open);
        address = address.substr(open + 1, text.size() - open - 2);
    }
    constexpr std::size_t longest = 320;
    if (address.empty() || address.size() > longest || hasAnyOf(address, " <>,;:\"()[]\\") ||
        hasAnyOf(name, "<>,;:\"()[]\\@")) {
        throw std::runtime_error(quoted(text) +
                                 " is no mail address like anna@example.org or Anna <anna@example.org>");
    }
    return std::string(address);
}

Delivery mailOf(Job const &job, std::string_view picture, std::time_t date) {
    Delivery mail{
        Delivery::Kind::mail, readServer(job.setting<std::string>("smtp_server")), "", "", "", "", {}, ""};
    auto const &from = job.setting<std::string>("from_address");
    mail.sender = from.empty() ? "" : readMailAddress(from);
    for (char const *const list : {"to_addresses", "cc_addresses"}) {
        for (std::string const &address : job.setting<Texts>(list)) {
            mail.recipients.push_back(readMailAddress(address));
        }
    }
    mail.contents = composeMail(job, picture, date);
    mail.url = "smtp://" + mail.server.address;
    return mail;
}

Delivery uploadOf(Job const &job, std::string picture) {
    auto const &filename = job.setting<std::string>("filename");
    auto const &path = job.setting<std::string>("path");
    if (filename.empty() || job.setting<std::string>("server_name").empty()) {
        throw std::runtime_error("it names no server or no file");
    }
    Delivery upload{Delivery::Kind::upload,
                    readServer(job.setting<std::string>("server_name")),
                    "",
                    job.setting<std::string>("username"),
                    job.setting<std::string>("password"),
                    "",
                    {},
                    std::move(picture)};
    refuseControls("file name", filename);
    refuseControls("path", path);
    refuseControls("username", upload.username);
    if (hasAnyOf(upload.password, "")) {
        throw std::runtime_error("its password has a control character");
    }
    upload.url = "ftp://" + upload.server.address + "/";
    std::string const whole = path + "/" + filename;
    std::string_view rest = whole;
    if (!path.empty() && path.front() == '/') {
        upload.url += "%2F";
    }
    bool first = true;
    while (!rest.empty()) {
        std::string_view const name = rest.substr(0, rest.find('/'));
        rest.remove_prefix(std::min(rest.size(), name.size() + 1));
        if (!name.empty()) {
            upload.url += first ? "" : "/";
            appendEscaped(upload.url, name);
            first = false;
        }
    }
    return upload;
}

}  // namespace simulator::runners
