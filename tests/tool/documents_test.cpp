// SPDX-License-Identifier: Apache-2.0
// The blocks of docs/tool.md, so that none of them rots: each ```sh block is run behind the ones before it, against one
// service, and writes what the ```text block behind it says.
#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

#include "support/service.h"
#include "support/workspace.h"
#include "tool_program.h"

namespace tool_tests {

namespace {

struct Block {
    std::string language;
    std::string text;
    std::size_t line = 0;
};

std::vector<Block> blocksOf(std::string const &name) {
    std::ifstream file(name);
    std::vector<Block> blocks;
    bool inside = false;
    std::size_t number = 0;
    for (std::string line; std::getline(file, line);) {
        ++number;
        if (line.compare(0, 3, "```") == 0) {
            inside = !inside;
            if (inside) {
                blocks.push_back({line.substr(3), "", number});
            }
        } else if (inside) {
            blocks.back().text += line + "\n";
        }
    }
    return blocks;
}

TEST(Manual, DoesWhatItsBlocksSay) {
    auto const folder = end_to_end::Workspace::ofThisProgram().newFolder("manual").string();
    end_to_end::Service service({"--clock", "virtual=2026-11-23T07:59:00"});
    auto const blocks = blocksOf(KORVO_TOOL_MANUAL);
    std::size_t run = 0;
    for (std::size_t place = 0; place < blocks.size(); ++place) {
        Block const &block = blocks[place];
        if (block.language != "sh") {
            EXPECT_EQ(block.language, "text") << "line " << block.line << ": no test runs this";
            continue;
        }
        ++run;
        ShellOutcome const outcome = shell("cd " + folder + " || exit 1\nset -e\n" + block.text);
        EXPECT_EQ(outcome.code, 0) << "line " << block.line << "\n" << outcome.out;
        if (place + 1 < blocks.size() && blocks[place + 1].language == "text") {
            EXPECT_EQ(outcome.out, blocks[place + 1].text) << "line " << block.line;
        }
    }
    EXPECT_GE(run, 20U);
}

TEST(Completion, WorksInBash) {
    ShellOutcome const outcome =
        shell("cd " + end_to_end::Workspace::ofThisProgram().newFolder("bash").string() + R"(
cat > completion.bash <<'END'
source <(korvo-action-engine completion bash)
try() {
    COMP_WORDS=(korvo-action-engine "$@")
    COMP_CWORD=$#
    _korvo_action_engine
    echo "${COMPREPLY[*]}"
}
try sh
try sim clock --ad
try trace --outcome "h"
try completion ""
try import completion.b
END
bash completion.bash; rm completion.bash)");
    EXPECT_EQ(outcome.out,
              "show\n"
              "--advance\n"
              "held back\n"
              "bash zsh\n"
              "completion.bash\n");
}

/// As zsh calls it, which gives words and the place of the cursor, and takes candidates by compadd.
TEST(Completion, WorksInZsh) {
    ShellOutcome const outcome =
        shell("cd " + end_to_end::Workspace::ofThisProgram().newFolder("zsh").string() + R"(
cat > completion.zsh <<'END'
compadd() { [[ $1 == -a ]] && print -r -- ${(P)2} }
_files() { print files }
try() {
    words=(korvo-action-engine "$@")
    CURRENT=$(($# + 1))
    source <(korvo-action-engine completion zsh)
}
try sh
try sim clock --ad
try trace --outcome "h"
try completion ""
try import completion.z
END
zsh -f completion.zsh)");
    EXPECT_EQ(outcome.out,
              "show\n"
              "--advance\n"
              "held back\n"
              "bash zsh\n"
              "files\n");
}

}  // namespace

}  // namespace tool_tests
