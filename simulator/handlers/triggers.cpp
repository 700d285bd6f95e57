// SPDX-License-Identifier: Apache-2.0
#include <exception>
#include <optional>
#include <string>
#include <utility>

#include "simulator/handlers/common.h"
#include "simulator/handlers/handlers.h"
#include "simulator/log.h"
#include "simulator/refused.h"

namespace simulator::handlers {

namespace {

constexpr Catalogue::Table triggers = Catalogue::Table::triggers;

/// The event is taken, so notes that memory is too short for are left out.
void noteInjection(Call &call, std::string const &topic, EngineState::Injection injection) noexcept {
    try {
        call.remarks.notes.push_back("event " + quoted(topic) + ": " + std::to_string(injection.fired) +
                                     " triggers fire");
        for (std::string &missed : injection.missed) {
            call.remarks.notes.push_back(std::move(missed));
        }
    } catch (std::exception const &) {
        call.remarks.notes.clear();
    }
}

}  // namespace

void createTrigger(Call &call) {
    std::uint32_t const id = call.state.catalogue.create(triggers, *call.kind, call.inputsFrom(0));
    call.state.restartTrigger(id, call.now);
    warnOfFault(call, triggers, id);
    call.response.number("trigger_id", id);
}

void getTrigger(Call &call) {
    writeMembers(call.response, settingsRow(*call.kind),
                 call.state.catalogue.settings(triggers, *call.kind, call.id()));
}

void modifyTrigger(Call &call) {
    call.state.catalogue.modify(triggers, *call.kind, call.id(), call.inputsFrom(1));
    call.state.restartTrigger(call.id(), call.now);
    warnOfFault(call, triggers, call.id());
}

void getTriggers(Call &call) {
    writeEntries(call.response, call.state.catalogue.entries(triggers), "trigger_id", "trigger_type");
}

void getTriggerCounts(Call &call) {
    writeCounts(call.response, call.state.catalogue, triggers, "trigger_types");
}

void getTriggerType(Call &call) {
    call.response.number("trigger_type", call.state.catalogue.at(triggers, call.id()).kind->type);
}

void deleteTrigger(Call &call) {
    call.state.catalogue.remove(triggers, call.id());
    call.state.forgetTrigger(call.id());
}

void onvifEvent(Call &call) {
    std::optional<onvif::Event> event;
    EngineState::Injection injection;
    try {
        event.emplace(readEvent(call.input<std::string>(0), call.input<std::string>(1),
                                {call.input<Texts>(2), call.input<Texts>(3)}));
        injection = call.state.inject(*event, call.now, call.wall);
    } catch (Refused const &refused) {
        call.state.refuse(call.input<std::string>(0), call.input<std::string>(1), refused.what(), call.wall);
        if (event || call.state.catalogue.nonsense() == Catalogue::Nonsense::refused) {
            throw;
        }
        call.remarks.warnings.push_back(std::string("an event is passed over: ") + refused.what());
        return;
    }
    noteInjection(call, event->topic_text, std::move(injection));
}

}  // namespace simulator::handlers
