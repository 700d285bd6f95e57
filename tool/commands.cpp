// SPDX-License-Identifier: Apache-2.0
// All sub-commands. Apart from command.cpp, so that its other functions can be used without them.
#include "tool/command.h"

namespace tool {

std::vector<Command> const &commands() {
    static std::vector<Command> const all = [] {
        std::vector<Command> made;
        addCatalogueCommands(made);
        addRuleCommands(made);
        addEventCommands(made);
        addTransferCommands(made);
        addGraphCommands(made);
        addLintCommands(made);
        addReportCommands(made);
        addTraceCommands(made);
        addSimulatorCommands(made);
        addCompletionCommands(made);
        addManualCommands(made);
        addOperationCommands(made);
        return made;
    }();
    return all;
}

}  // namespace tool
