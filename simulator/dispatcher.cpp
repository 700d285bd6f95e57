// SPDX-License-Identifier: Apache-2.0
#include "simulator/dispatcher.h"

#include <boost/json/object.hpp>
#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <boost/json/value.hpp>
#include <exception>
#include <utility>

#include "error_words.h"
#include "simulator/handlers/handlers.h"
#include "simulator/refused.h"
#include "simulator/response.h"

namespace simulator {

namespace {

/// No answer to a command that changes something is longer: it is written when the change is made, and then nothing may
/// fail any more.
constexpr std::size_t longest_confirmation = 512;

}  // namespace

Dispatcher::Dispatcher(Engine &engine, Settings settings, Log const &log,
                       std::function<Engine::Time()> real_time)
    : engine_(engine),
      version_(settings.version),
      faults_(settings.faults),
      log_(log),
      refusals_(log, std::move(real_time)) {
    response_.reserve(longest_confirmation);
}

Dispatcher::Answer Dispatcher::answer(std::string_view command) {
    response_.clear();
    Answer answer{response_};
    try {
        reader_.read(command);
        Fault const fault =
            faults_.with([this](FaultTable &faults) { return faults.take(reader_.method()); });
        if (fault.drop) {
            return answer;
        }
        answer.delay = fault.delay;
        answer.duplicate = fault.duplicate;
        answer.close = fault.close;
        if (fault.status) {
            writeStatus(*fault.status);
        } else {
            respond();
        }
        spoil(fault);
    } catch (Refused const &refused) {
        writeStatus(refused.status());
        logRefusal(refused.what());
    } catch (std::exception const &error) {
        writeStatus(KORVO_CORE_STATUS_REMOTE_FUNCTION_FAILURE);
        logFailure(platform::wordsOf(error));
    }
    return answer;
}

void Dispatcher::spoil(Fault const &fault) {
    if (!fault.missing.empty()) {
        boost::json::value response = boost::json::parse(response_);
        response.as_object().erase(fault.missing);
        std::string const spoilt = boost::json::serialize(response);
        // A copy, so that what was reserved stays.
        response_ = spoilt;
    }
    if (fault.garble) {
        response_.resize(response_.size() / 2);
    }
}

void Dispatcher::respond() {
    Values &inputs = reader_.inputs();
    Engine::Time const now = engine_.now();
    Wall const wall = engine_.wall();
    handlers::Remarks remarks;
    engine_.change([&](EngineState &state) {
        JsonWriter response(response_);
        writeEnvelope(response, reader_.name(), KORVO_CORE_STATUS_NO_ERROR);
        handlers::Call call{inputs, state, response, now, wall, version_, nullptr, remarks, told_versions_};
        handlers::carryOut(reader_.method(), call);
        response.close();
    });
    for (std::string const &warning : remarks.warnings) {
        log_.warning(warning);
    }
    for (std::string const &note : remarks.notes) {
        log_.info(note);
    }
    if (response_.size() > longest_response) {
        throw impossible("the answer is longer than a message may be");
    }
}

std::string Dispatcher::commandName() const {
    return reader_.name().empty() ? "a command" : quoted(reader_.name());
}

void Dispatcher::writeStatus(std::uint32_t status) {
    response_.clear();
    JsonWriter response(response_);
    writeEnvelope(response, reader_.name(), status);
    response.close();
}

void Dispatcher::logFailure(char const *why) noexcept {
    try {
        log_.error(commandName() + " failed: " + why);
    } catch (std::exception const &) {
        // The command is answered; that nobody is told why is no reason to take the answer back.
    }
}

void Dispatcher::logRefusal(char const *why) noexcept {
    try {
        refusals_.tell(commandName(), why);
    } catch (std::exception const &) {
        // As above.
    }
}

}  // namespace simulator
