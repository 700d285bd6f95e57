// SPDX-License-Identifier: Apache-2.0
// Manual pages, as man reads them, made of the rows of commands and operations.

#include <set>

#include "tool/command.h"
#include "tool/command_line.h"
#include "tool/failure.h"
#include "tool/marshalling.h"
#include "tool/operations.h"
#include "tool/output.h"
#include "tool/secrets.h"

namespace tool {
namespace {

/// A text as it is, whatever its characters mean to man. Where a line begins, so does the text.
std::string plain(std::string const &text) {
    std::string result;
    for (char const character : text) {
        switch (character) {
            case '\\':
                result += "\\e";
                break;
            case '-':
                result += "\\-";
                break;
            case '\'':
                result += "\\(aq";
                break;
            case '`':
                result += "\\(ga";
                break;
            case '^':
                result += "\\(ha";
                break;
            case '~':
                result += "\\(ti";
                break;
            case '.':
                // Only at the beginning of a line would it be a request.
                result += result.empty() || result.back() == '\n' ? "\\&." : ".";
                break;
            default:
                result += character;
        }
    }
    return result;
}

std::string bold(std::string const &text) {
    return "\\fB" + plain(text) + "\\fR";
}

std::string italic(std::string const &text) {
    return "\\fI" + plain(text) + "\\fR";
}

std::string heading(char const *page, char const *section, char const *of_section) {
    return std::string(".\\\" SPDX-License-Identifier: Apache-2.0\n.TH \"") + page + "\" \"" + section +
           "\" \"\" \"korvo-api-action-engine " KORVO_VERSION "\" \"" + of_section + "\"\n";
}

std::string synopsisOf(Parameter const &parameter) {
    if (!parameter.isOption()) {
        return italic(parameter.name);
    }
    std::string const name = parameter.name == "--verbose" ? "-v, --verbose" : parameter.name;
    return bold(name) + (parameter.takes == Parameter::Takes::flag ? "" : " " + italic(parameter.value));
}

void write(Parameter const &parameter) {
    output::line(".TP\n" + synopsisOf(parameter) + "\n" + plain(parameter.help) +
                 (parameter.required ? "\n(required)" : ""));
}

void write(Command const &command) {
    std::string title = bold(command.name);
    for (Parameter const &parameter : command.parameters) {
        if (!parameter.isOption()) {
            std::string const word =
                italic(parameter.name) + (parameter.takes == Parameter::Takes::many ? " ..." : "");
            title += parameter.required ? " " + word : " [" + word + "]";
        }
    }
    output::line(".TP\n" + title);
    // The details of some begin with the line that stands in lists.
    if (command.details.compare(0, command.help.size(), command.help) != 0) {
        output::line(plain(command.help) + (command.details.empty() ? "" : "."));
    }
    if (!command.details.empty()) {
        output::line(plain(command.details));
    }
    if (!command.parameters.empty()) {
        output::line(".RS");
        for (Parameter const &parameter : command.parameters) {
            write(parameter);
        }
        output::line(".RE");
    }
}

void writeTool() {
    output::write(heading("KORVO-ACTION-ENGINE", "1", "User Commands"));
    output::line(
        std::string(".SH NAME\nkorvo\\-action\\-engine \\- a camera's action_engine service from a shell"
                    "\n.SH SYNOPSIS\n.B korvo\\-action\\-engine\n[\\fIoptions\\fR] \\fIcommand\\fR "
                    "[\\fIarguments\\fR]"
                    "\n.SH DESCRIPTION\n") +
        plain(about));
    output::line(
        ".PP\nOperations take identifiers as numbers. All else takes 7, action:7, trigger:7, or the name of "
        "the action or trigger.\n"
        "A list is given by repeating its option; a flag is given alone, or as \\-\\-attach\\-jpeg=false.\n"
        "A password is never an argument: it is the first line of a file, or of standard input.");
    output::line(".SH OPTIONS\nEach command takes these, before its name or behind it.");
    for (Parameter const &parameter : commonParameters()) {
        write(parameter);
    }
    output::line(
        ".TP\n\\fB\\-h\\fR, \\fB\\-\\-help\\fR\nPrint the options of the command and exit.\n.TP\n"
        "\\fB\\-\\-version\\fR\nPrint the program's version and exit.");
    output::line(".SH COMMANDS");
    std::string group;
    for (Command const &command : commands()) {
        if (command.group != group) {
            group = command.group;
            output::line(".SS " + plain(group));
        }
        write(command);
    }
    output::line(".SH EXIT STATUS");
    for (ExitRow const &row : exitRows()) {
        output::line(".TP\n" + bold(std::to_string(static_cast<int>(row.code))) + "  " + plain(row.name) +
                     "\n" + plain(row.meaning));
    }
    output::write(R"(.PP
With \fB\-\-json\fR an error is one object on standard error, whose member error holds exit_code, kind (the word beside the
number above), text, advice, and status where a call failed.
.SH ENVIRONMENT
.TP
.B KORVO_RUNTIME_DIR
The folder of the sockets in which services and programs meet.
Without it, $XDG_RUNTIME_DIR/korvo where that variable names a folder; else korvo\-\fIUID\fR in $TMPDIR, or in /tmp.
.TP
.B KORVO_LOG_LEVEL
How much of the library's log \fB\-\-verbose\fR shows.
.TP
.B NO_COLOR
No colours where it is set and not empty.
.SH EXAMPLES
.nf
korvo\-action\-engine rule add \-\-timer 60 \-\-name minute \-\-action "snapshot action_name=door filename=door.jpg"
korvo\-action\-engine list \-\-json
korvo\-action\-engine wait\-event \-\-action 1 \-\-timeout 2m
korvo\-action\-engine export > catalogue.json
korvo\-action\-engine call Get_action_type \(aq{"action_id": 1}\(aq
.fi
.SH SEE ALSO
.BR korvo\-action\-engine\-catalogue (5),
.BR korvo\-action\-engine\-capture (5),
.BR korvo\-action\-engine\-simulator (1)
)");
}

/// What create operations make, by the kinds of the catalogue.
void writeCatalogue() {
    output::write(heading("KORVO-ACTION-ENGINE-CATALOGUE", "5", "File Formats"));
    output::write(R"(.SH NAME
korvo\-action\-engine\-catalogue \- actions, triggers and what binds them, as one JSON document
.SH DESCRIPTION
\fBkorvo\-action\-engine export\fR writes such a document, \fBimport\fR, \fBdiff\fR and the service for development machines
read it.
It is one JSON object; all members are there, and others are passed over.
.TP
\fBformat\fR, \fBversion\fR
The text korvo\-action\-engine\-catalogue, and the number 1. A reader refuses others.
.TP
.B actions
A list of objects with the members \fBid\fR, \fBkind\fR, \fBsettings\fR and \fBfilters\fR.
.TP
.B triggers
A list of objects with the members \fBid\fR, \fBkind\fR and \fBsettings\fR.
.TP
.B associations
A list of objects with the members \fBtrigger_id\fR and \fBaction_id\fR: this trigger runs this action.
.SS An action or trigger
.TP
.B id
The identifier, from 1 on, and only once among actions or triggers.
.TP
.B kind
One of those below.
.TP
.B settings
An object with the members that stand below its kind.
.TP
.B filters
The three lists \fBweekday_filters\fR, \fBtime_filters_start\fR and \fBtime_filters_end\fR. The n\-th entries of the three are
one filter: weekdays (Sunday 1, Monday 2, and so on to Saturday 64, added up), and a window in seconds since local
midnight, without its end. Empty lists let the action run at any time.
.SS Passwords
are null unless they were asked for with \fB\-\-show\-secrets\fR. Where null is read, the password is the one that the
action of the same kind and name (for the service: of the same identifier and kind) has at that moment.
.SS Order
\fBexport\fR writes entries by name, kind and settings, with identifiers from 1 on in that order, so that equal catalogues
give equal files. A reader takes any order.
.SH KINDS
)");
    for (Operation const &operation : operations()) {
        std::string const name = operation.name;
        if (name.compare(0, 7, "create_") != 0 || name == "create_association") {
            continue;
        }
        output::line(".SS " + plain(name.substr(7)));
        for (Member const &member : operation.inputs) {
            output::line(".TP\n" + bold(member.name) + "\n" + plain(typeOf(member.kind)) +
                         (isSecret(member.name) ? ", or null" : "") + ": " + plain(member.explanation));
        }
    }
    output::write(R"(.SH EXAMPLE
.nf
{
  "format": "korvo\-action\-engine\-catalogue",
  "version": 1,
  "actions": [
    {
      "id": 1,
      "kind": "snapshot_action",
      "settings": {"action_name": "door", "filename": "door.jpg"},
      "filters": {"weekday_filters": [62], "time_filters_start": [28800], "time_filters_end": [64800]}
    }
  ],
  "triggers": [
    {"id": 1, "kind": "timer_trigger", "settings": {"trigger_name": "minute", "timer_seconds": 60}}
  ],
  "associations": [{"trigger_id": 1, "action_id": 1}]
}
.fi
.SH SEE ALSO
.BR korvo\-action\-engine (1),
.BR korvo\-action\-engine\-simulator (1)
)");
}

void manual(Context &context) {
    std::string const page = context.arguments.has("PAGE") ? context.arguments.text("PAGE") : "tool";
    if (page != "tool" && page != "catalogue") {
        throw Failure(Exit::usage, "PAGE is not \"" + page + "\"", "it is tool or catalogue");
    }
    page == "tool" ? writeTool() : writeCatalogue();
}

}  // namespace

void addManualCommands(std::vector<Command> &commands) {
    commands.push_back({"manual",
                        "Shells",
                        "write a manual page, as man reads it",
                        "To read it: korvo-action-engine manual | man -l -",
                        {{"PAGE",
                          "tool or catalogue, which is the form of exported files (default: tool)",
                          false,
                          Parameter::Takes::one,
                          "PAGE",
                          Completion::word,
                          {"tool", "catalogue"}}},
                        manual});
}

}  // namespace tool
