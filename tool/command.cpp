// SPDX-License-Identifier: Apache-2.0
#include "tool/command.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "tool/failure.h"

namespace tool {

Client &Context::client() {
    if (client_ == nullptr) {
        auto client = std::make_unique<Client>(settings);
        // Before it is kept, so that a later try looks at the version again.
        client->requireVersion();
        client_ = std::move(client);
    }
    return *client_;
}

std::vector<Parameter> const &commonParameters() {
    using Takes = Parameter::Takes;
    static std::vector<Parameter> const all = {
        {"--json", "results and errors as JSON", false, Takes::flag},
        {"--verbose", "show the library's log on standard error", false, Takes::flag},
        {"--timeout", "how long each call waits: 250ms, 5s, 2m, 1h, forever (default: 5s)", false, Takes::one,
         "TIME"},
        {"--target", "which instance of the service (default: its default target)", false, Takes::one,
         "NAME"},
        {"--show-secrets", "show passwords instead of hiding them", false, Takes::flag},
        {"--require-version", "stop unless the service speaks this version, as in 1.19", false, Takes::one,
         "VERSION"},
    };
    return all;
}

std::string textOfFile(std::string const &parameter, std::string const &file) {
    struct Close {
        void operator()(std::FILE *stream) const {
            if (stream != stdin) {
                (void)std::fclose(stream);
            }
        }
    };
    std::string text;
    std::unique_ptr<std::FILE, Close> const stream(file == "-" ? stdin : std::fopen(file.c_str(), "rbe"));
    std::array<char, 4096> part{};
    for (std::size_t size = part.size(); stream != nullptr && size == part.size();) {
        size = std::fread(part.data(), 1, part.size(), stream.get());
        text.append(part.data(), size);
    }
    // A folder can be opened, and fails when it is read.
    if (stream == nullptr || std::ferror(stream.get()) != 0) {
        throw Failure(Exit::usage, parameter + ": cannot read \"" + file + "\": " + std::strerror(errno),
                      "name a file that can be read, or - for standard input");
    }
    return text;
}

std::string passwordIn(std::string const &parameter, std::string const &file) {
    std::string text = textOfFile(parameter, file);
    text.erase(std::min(text.find_first_of("\r\n"), text.size()));
    return text;
}

}  // namespace tool
