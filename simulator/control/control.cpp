// SPDX-License-Identifier: Apache-2.0
#include "simulator/control/control.h"

#include <algorithm>
#include <array>
#include <boost/json/array.hpp>
#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <boost/json/value.hpp>
#include <utility>

#include "error_words.h"
#include "simulator/catalogue_document.h"
#include "simulator/control/check.h"
#include "simulator/control/members.h"
#include "simulator/meaning.h"
#include "simulator/refused.h"
#include "simulator/response.h"

namespace simulator::control {

namespace json = boost::json;

namespace {

constexpr std::array advancing = {std::string_view("Advance_clock"), std::string_view("Run_clock_until")};

std::string textOf(std::string_view name, std::uint32_t status, json::object const &results) {
    json::object response{{"command", json::string(name)}, {"status", status}};
    for (auto const &member : results) {
        response[member.key()] = member.value();
    }
    return json::serialize(response);
}

std::size_t methodIn(Members const &members) {
    std::string const name = members.text("method");
    auto const method = findMethod(name);
    if (!method) {
        throw malformed("there is no method " + quoted(name));
    }
    return *method;
}

json::object faultTold(std::uint32_t id, FaultTable::Entry const &entry) {
    Fault const &fault = entry.fault;
    json::object told{{"fault_id", id}, {"method", methodAt(entry.method).method}};
    if (fault.status) {
        told["fail"] = *fault.status;
    }
    told["delay_ms"] = fault.delay.count();
    told["drop"] = fault.drop;
    told["garble"] = fault.garble;
    told["duplicate"] = fault.duplicate;
    told["close"] = fault.close;
    told["missing"] = fault.missing;
    if (fault.count) {
        told["count"] = *fault.count;
    }
    return told;
}

onvif::Event eventIn(Members const &members) {
    return readEvent(members.text("topic"), members.text("message"),
                     {members.texts("namespace_keys"), members.texts("namespace_uris")});
}

/// The service's own folder is none that its clients know.
std::string fileIn(Members const &members) {
    std::string path = members.text("file");
    if (path.empty() || path.front() != '/' || path.find('\0') != std::string::npos) {
        throw malformed("the member \"file\" must be an absolute path");
    }
    return path;
}

bool isAbout(json::object const &trace, char const *list, char const *member, std::uint32_t id) {
    json::value const *const entries = trace.if_contains(list);
    return entries != nullptr && entries->is_array() &&
           std::any_of(entries->get_array().begin(), entries->get_array().end(),
                       [&](json::value const &entry) {
                           json::value const *const found =
                               entry.is_object() ? entry.get_object().if_contains(member) : nullptr;
                           return found != nullptr && *found == json::value(id);
                       });
}

}  // namespace

Control::Control(Parts parts, Log const &log) : parts_(std::move(parts)), log_(log) {}

void Control::answer(std::string_view command, Reply reply) {
    std::string name;
    std::uint32_t status = KORVO_CORE_STATUS_NO_ERROR;
    json::object results;
    try {
        json::error_code error;
        json::value const value = json::parse(json::string_view(command.data(), command.size()), error);
        if (error || !value.is_object()) {
            throw malformed("the command is no JSON object");
        }
        Members const members(value.get_object());
        name = members.text("command");
        if (std::find(advancing.begin(), advancing.end(), name) != advancing.end()) {
            beginAdvance(name, members, reply);
            return;
        }
        results = carryOut(name, members);
    } catch (Refused const &refused) {
        status = refused.status();
        results = {{"reason", refused.what()}};
    } catch (std::exception const &error) {
        status = KORVO_CORE_STATUS_REMOTE_FUNCTION_FAILURE;
        results = {{"reason", platform::wordsOf(error)}};
    }
    std::string text = textOf(name, status, results);
    if (text.size() > longest_response) {
        text = textOf(name, KORVO_CORE_STATUS_REMOTE_FUNCTION_FAILURE,
                      {{"reason", "the answer is longer than a message may be; ask for less"}});
    }
    if (status != KORVO_CORE_STATUS_NO_ERROR) {
        log_.info("control: " + quoted(name) + " refused: " + std::string(results["reason"].as_string()));
    }
    reply(text);
}

std::string Control::refusal(std::string_view command, char const *reason) {
    json::error_code error;
    json::value const value = json::parse(json::string_view(command.data(), command.size()), error);
    json::value const *const name = value.is_object() ? value.get_object().if_contains("command") : nullptr;
    return textOf(name != nullptr && name->is_string() ? std::string_view(name->get_string()) : "",
                  KORVO_CORE_STATUS_REMOTE_FUNCTION_FAILURE, {{"reason", reason}});
}

Control::Object Control::carryOut(std::string_view name, Members const &members) {
    struct Row {
        std::string_view name;
        Object (*carry_out)(Control &, Members const &);
    };
    static constexpr Row rows[] = {
        {"Get_clock", [](Control &control, Members const &) { return control.clockTold(); }},
        {"Set_clock",
         [](Control &control, Members const &given) {
             control.setClock(given);
             return control.clockTold();
         }},
        {"Add_fault", [](Control &control, Members const &given) { return control.addFault(given); }},
        {"Get_faults", [](Control &control, Members const &) { return control.faultsTold(); }},
        {"Clear_faults",
         [](Control &control, Members const &given) {
             control.clearFaults(given);
             return Object();
         }},
        {"Get_traces", [](Control &control, Members const &given) { return control.traces(given); }},
        {"Explain", [](Control &control, Members const &given) { return control.explain(given); }},
        {"Inject", [](Control &control, Members const &given) { return control.inject(given); }},
        {"Check_topic_filter", [](Control &, Members const &given) { return checkTopicFilter(given); }},
        {"Check_content_filter", [](Control &, Members const &given) { return checkContentFilter(given); }},
        {"Check_filters",
         [](Control &control, Members const &given) {
             return checkFilters(given, control.parts_.clock.wall());
         }},
        {"Get_devices",
         [](Control &control, Members const &) {
             return Object{{"devices", control.parts_.runner.devices()}};
         }},
        {"Get_catalogue", [](Control &control, Members const &given) { return control.catalogue(given); }},
        {"Replace_catalogue",
         [](Control &control, Members const &given) {
             control.replaceCatalogue(given);
             return Object();
         }},
        {"Start_capture", [](Control &control, Members const &given) { return control.startCapture(given); }},
        {"Stop_capture",
         [](Control &control, Members const &) {
             return Object{{"messages", control.parts_.tape.stopCapture()}};
         }},
        {"Start_replay", [](Control &control, Members const &given) { return control.startReplay(given); }},
        {"Stop_replay", [](Control &control, Members const &) { return control.stopReplay(); }},
    };
    auto const *const row =
        std::find_if(std::begin(rows), std::end(rows), [&](Row const &one) { return one.name == name; });
    if (row == std::end(rows)) {
        std::string all;
        for (Row const &one : rows) {
            all.append(one.name).append(", ");
        }
        throw unsupported("there is no control command " + quoted(name) + "; there are " + all +
                          "Advance_clock, " + "Run_clock_until");
    }
    return row->carry_out(*this, members);
}

Control::Object Control::clockTold() const {
    Clock const &clock = parts_.clock;
    Wall const wall = clock.wall();
    LocalTime const local = localTime(wall);
    return {
        {"mode", clock.isVirtual() ? "virtual" : "real"},
        {"rate", clock.rate()},
        {"time", momentText(wall)},
        {"unix_seconds", std::chrono::duration_cast<std::chrono::seconds>(wall.time_since_epoch()).count()},
        {"weekday", local.weekday},
        {"seconds_of_day", local.seconds}};
}

void Control::needVirtualClock() const {
    if (!parts_.clock.isVirtual()) {
        throw impossible("the clock is the machine's; start the service with --clock virtual to move it");
    }
    if (advance_) {
        throw impossible("the clock is being advanced; wait for that to be answered");
    }
}

void Control::setClock(Members const &members) {
    needVirtualClock();
    auto const rate = members.optionalNumber("rate");
    if (rate && *rate > Clock::fastest) {
        throw malformed("the rate is at most " + std::to_string(Clock::fastest));
    }
    if (members.has("time")) {
        parts_.clock.set(momentIn(members, "time"));
    }
    if (rate) {
        parts_.clock.setRate(*rate);
    }
    parts_.wake();
}

void Control::beginAdvance(std::string_view name, Members const &members, Reply const &reply) {
    needVirtualClock();
    Clock const &clock = parts_.clock;
    std::chrono::nanoseconds ahead{};
    if (name == advancing.front()) {
        ahead = std::chrono::seconds(members.number("seconds"));
    } else {
        ahead = momentIn(members, "time") - clock.wall();
    }
    if (ahead < std::chrono::nanoseconds(0)) {
        throw impossible("that time has passed; Set_clock sets the clock back");
    }
    if (!clock.reaches(clock.now() + ahead)) {
        throw impossible("the clock cannot be advanced so far");
    }
    advance_ = Advance{std::string(name), clock.now() + ahead, reply};
    parts_.wake();
}

bool Control::advance() {
    if (!advance_) {
        return false;
    }
    auto const next = earlier(parts_.engine.nextDeadline(), parts_.tape.nextDeadline());
    if (next && *next <= advance_->until) {
        parts_.clock.advanceTo(*next);
        return true;
    }
    parts_.clock.advanceTo(advance_->until);
    std::string const text = textOf(advance_->name, KORVO_CORE_STATUS_NO_ERROR, clockTold());
    std::exchange(advance_, std::nullopt)->reply(text);
    return true;
}

Control::Object Control::addFault(Members const &members) {
    Fault fault;
    fault.status = members.optionalNumber("fail");
    if (fault.status == 0U) {
        throw malformed("\"fail\": status 0 is success; give another one");
    }
    fault.delay = std::chrono::milliseconds(members.optionalNumber("delay_ms").value_or(0));
    fault.drop = members.flag("drop");
    fault.garble = members.flag("garble");
    fault.duplicate = members.flag("duplicate");
    fault.close = members.flag("close");
    fault.missing = members.text("missing", "");
    fault.count = members.optionalNumber("count");
    if (fault.count == 0U) {
        throw malformed("\"count\" must be at least 1");
    }
    if (!fault.status && fault.delay.count() == 0 && !fault.drop && !fault.garble && !fault.duplicate &&
        !fault.close && fault.missing.empty()) {
        throw malformed(
            "it says not what goes wrong: give fail, delay_ms, drop, garble, duplicate, close or missing");
    }
    std::size_t const method = methodIn(members);
    return {{"fault_id", parts_.faults.with([&](FaultTable &faults) { return faults.add(method, fault); })}};
}

Control::Object Control::faultsTold() {
    json::array told;
    parts_.faults.with([&](FaultTable &faults) {
        for (auto const &[id, entry] : faults.entries()) {
            told.push_back(faultTold(id, entry));
        }
    });
    return {{"faults", std::move(told)}};
}

void Control::clearFaults(Members const &members) {
    auto const id = members.optionalNumber("fault_id");
    parts_.faults.with([&](FaultTable &faults) {
        if (!id) {
            faults.clear();
        } else if (!faults.remove(*id)) {
            throw impossible("there is no fault " + std::to_string(*id));
        }
    });
}

Control::Object Control::traces(Members const &members) {
    constexpr std::size_t most_bytes = 800'000;
    auto const after = members.optionalNumber("after").value_or(0);
    auto const limit = members.optionalNumber("limit").value_or(100);
    auto const trigger_id = members.optionalNumber("trigger_id");
    auto const action_id = members.optionalNumber("action_id");
    std::string const outcome = members.text("outcome", "");
    std::vector<KeptTrace> kept;
    parts_.engine.change([&](EngineState &state) { kept = state.traces.after(after); });
    // The last ones, unless somebody goes through them from one on.
    bool const forward = members.has("after");
    if (!forward) {
        std::reverse(kept.begin(), kept.end());
    }
    json::array told;
    std::size_t bytes = 0;
    bool more = false;
    for (KeptTrace const &trace : kept) {
        json::object object = trace.object();
        if ((!outcome.empty() && object["outcome"] != json::value(outcome)) ||
            (trigger_id && !isAbout(object, "triggers", "trigger_id", *trigger_id)) ||
            (action_id && !isAbout(object, "actions", "action_id", *action_id))) {
            continue;
        }
        std::size_t const size = json::serialize(object).size();
        if (told.size() == limit || bytes + size > most_bytes) {
            more = true;
            break;
        }
        bytes += size;
        told.push_back(std::move(object));
    }
    if (!forward) {
        std::reverse(told.begin(), told.end());
    }
    return {{"traces", std::move(told)}, {"more", more}};
}

Control::Object Control::explain(Members const &members) {
    onvif::Event const event = eventIn(members);
    Wall const wall = parts_.clock.wall();
    Trace trace;
    parts_.engine.change([&](EngineState &state) { trace = state.explain(event, wall); });
    json::object told = describe(trace);
    told.erase("id");
    told.erase("outcome");
    return {{"trace", std::move(told)}};
}

Control::Object Control::inject(Members const &members) {
    onvif::Event const event = eventIn(members);
    std::uint32_t fired = 0;
    parts_.engine.change([&](EngineState &state) {
        fired = state.inject(event, parts_.clock.now(), parts_.clock.wall()).fired;
    });
    return {{"fired", fired}};
}

Control::Object Control::catalogue(Members const &members) {
    Telling const telling = members.flag("secrets") ? Telling::all : Telling::without_secrets;
    json::object document;
    parts_.engine.change([&](EngineState &state) { document = documentOf(state.catalogue, telling); });
    return {{"catalogue", std::move(document)}};
}

void Control::replaceCatalogue(Members const &members) {
    parts_.engine.change([&](EngineState &state) {
        state.replace(readDocument(members.objectAt("catalogue"), state.catalogue), parts_.clock.now());
    });
}

Control::Object Control::startCapture(Members const &members) {
    parts_.tape.startCapture(fileIn(members),
                             members.flag("secrets") ? Capture::Secrets::shown : Capture::Secrets::hidden,
                             Capture::Existing::refused);
    return {};
}

Control::Object Control::startReplay(Members const &members) {
    parts_.tape.startReplay(fileIn(members), parts_.clock.now());
    parts_.wake();
    return {};
}

Control::Object Control::stopReplay() {
    Replay::Counts const counts = parts_.tape.stopReplay();
    return {{"answered", counts.answered}, {"refused", counts.refused}, {"left", counts.left}};
}

}  // namespace simulator::control
