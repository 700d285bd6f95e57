// SPDX-License-Identifier: Apache-2.0
#include "header/declarations.h"

#include <stdexcept>

#include "typed_calls/operation_names.h"

namespace public_header {

std::vector<std::string> const &operationNames() {
#define NAME(operation) #operation,
    static std::vector<std::string> const names = {OPERATION_NAMES(NAME)};
#undef NAME
    return names;
}

header_text::Header const &header() {
    static header_text::Header const header = header_text::parse(header_text::readFile(KORVO_PUBLIC_HEADER));
    return header;
}

header_text::Declaration const &declaration(std::string const &name) {
    for (header_text::Declaration const &declaration : header().declarations) {
        if (declaration.name == name) {
            return declaration;
        }
    }
    throw std::runtime_error("the header does not declare " + name);
}

header_text::Declaration const &callbackType(std::string const &operation) {
    return declaration(prefix + operation + "_method_callback_func_ptr");
}

std::vector<header_text::Parameter> inputs(std::string const &operation) {
    // Behind handle, target and request_id.
    std::vector<header_text::Parameter> parameters =
        declaration(prefix + operation + "_non_blocking_send").parameters;
    parameters.erase(parameters.begin(), parameters.begin() + 3);
    return parameters;
}

std::vector<header_text::Parameter> results(std::string const &operation) {
    // Between target and status, and the context.
    std::vector<header_text::Parameter> const &parameters = callbackType(operation).parameters;
    return {parameters.begin() + 2, parameters.end() - 1};
}

}  // namespace public_header
