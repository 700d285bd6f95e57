// SPDX-License-Identifier: Apache-2.0
#include "simulator/runners/runner.h"

#include <boost/json/array.hpp>
#include <boost/json/value.hpp>
#include <chrono>
#include <ctime>
#include <exception>
#include <stdexcept>
#include <utility>

#include "error_words.h"
#include "simulator/runners/file.h"
#include "simulator/runners/test_picture.h"

namespace simulator::runners {

Runner::Runner(Folders folders, std::function<Wall()> wall, std::function<Clock::Time()> now, Log const &log,
               Live live)
    : folders_(std::move(folders)),
      wall_(std::move(wall)),
      log_(log),
      now_(std::move(now)),
      live_(std::move(live)) {}

Runner::Runner(Folders folders, std::function<Wall()> wall, std::function<Clock::Time()> now, Log const &log)
    : Runner(std::move(folders), std::move(wall), std::move(now), log, Live()) {}

void Runner::run(Job const &job, Done const &done) {
    RunResult result{false, ""};
    try {
        std::string const action =
            std::string(job.kind->noun) + " " + std::to_string(job.action_id) + " " + quoted(job.name());
        try {
            if (isLive(*job.kind)) {
                send(job, action, done);
                return;
            }
            result = {true, perform(job)};
        } catch (std::exception const &error) {
            result.words = platform::wordsOf(error);
        }
        tell(action, result);
    } catch (std::exception const &) {
        // Not even the log line could be made.
    }
    done(std::move(result));
}

void Runner::finish() {
    if (live_.transfers != nullptr) {
        live_.transfers->finish();
    }
}

void Runner::tell(std::string const &action, RunResult const &result) const {
    if (result.success) {
        log_.notice(action + ": " + result.words);
    } else {
        log_.warning(action + " failed: " + result.words);
    }
}

bool Runner::isLive(EntryKind const &kind) const {
    return (kind.type == protocol::send_email && live_.mail) ||
           (kind.type == protocol::ftp_upload && live_.ftp);
}

void Runner::send(Job const &job, std::string const &action, Done const &done) {
    bool only_with_tls = false;
    Delivery delivery =
        job.kind->type == protocol::send_email ? mail(job) : uploadOf(job, takeSnapshot(wall_()));
    if (delivery.kind == Delivery::Kind::mail) {
        auto const login = live_.logins.find(delivery.server.host);
        if (login != live_.logins.end()) {
            only_with_tls = true;
            delivery.username = login->second.username;
            delivery.password = login->second.password;
        }
    }
    live_.transfers->begin(std::move(delivery), only_with_tls, [this, action, done](RunResult result) {
        try {
            tell(action, result);
        } catch (std::exception const &) {
            // It has run all the same.
        }
        done(std::move(result));
    });
}

std::string Runner::perform(Job const &job) {
    switch (job.kind->type) {
        case protocol::send_email:
            return recordMail(job);
        case protocol::ftp_upload:
            return recordUpload(job);
        case protocol::save_snapshot:
            return saveSnapshot(job);
        case protocol::ptz_pattern:
            return moveHead(job, "pattern", "pattern_id");
        case protocol::ptz_preset:
            return moveHead(job, "preset", "preset_id");
        case protocol::ptz_tour:
            return moveHead(job, "tour", "tour_id");
        case protocol::ptz_scan:
            return moveHead(job, "scan", "scan_id");
        case protocol::run_wiper:
            devices_.runWiper(now_());
            return "the wiper ran";
        case protocol::run_washer:
            devices_.runWasher(now_());
            return "the washer ran";
        case protocol::switch_relay:
            return switchRelay(job);
        default:
            throw std::runtime_error("there is nothing to do for type " + std::to_string(job.kind->type));
    }
}

Delivery Runner::mail(Job const &job) const {
    std::string const picture = job.setting<bool>("attach_jpeg") ? takeSnapshot(wall_()) : std::string();
    return mailOf(job, picture, std::chrono::system_clock::to_time_t(wall_()));
}

std::string Runner::recordMail(Job const &job) {
    Delivery const recorded = mail(job);
    std::string const name = outboxName(job, "mail", ".eml");
    writeFile(folders_.outbox, name, recorded.contents);
    return "mail put into the outbox as " + quoted(name);
}

std::string Runner::recordUpload(Job const &job) {
    Delivery const recorded = uploadOf(job, takeSnapshot(wall_()));
    std::string const name = outboxName(job, "upload", ".jpg");
    writeFile(folders_.outbox, name, recorded.contents);
    // The password is nobody's business, in a log least of all.
    return "picture for " + quoted(job.setting<std::string>("filename")) + " in " +
           quoted(job.setting<std::string>("path")) + " on " + quoted(recorded.server.address) + " (as " +
           quoted(recorded.username) + ") put into the outbox as " + quoted(name);
}

std::string Runner::saveSnapshot(Job const &job) {
    auto const &name = job.setting<std::string>("filename");
    writeFile(folders_.snapshots, name, takeSnapshot(wall_()));
    constexpr std::size_t most_pictures = 10;
    pictures_.push_front(name);
    if (pictures_.size() > most_pictures) {
        pictures_.pop_back();
    }
    return "picture saved as " + quoted(name);
}

std::string Runner::moveHead(Job const &job, char const *what, char const *id_member) {
    auto const &id = job.setting<std::string>(id_member);
    if (id.empty()) {
        throw std::runtime_error(std::string("it names no ") + what);
    }
    devices_.moveHead(positionOf(what, id), now_());
    return std::string(what) + " " + quoted(id) + ", head moves to " + describe(devices_.headTarget());
}

std::string Runner::switchRelay(Job const &job) {
    devices_.switchRelay(
        job.setting<std::string>("relay_target"),
        {job.setting<std::uint32_t>("config_mode"), job.setting<bool>("config_normally_closed"),
         job.setting<std::uint32_t>("config_repeat_cycles"),
         std::chrono::milliseconds(job.setting<std::uint32_t>("config_on_time_ms")),
         std::chrono::milliseconds(job.setting<std::uint32_t>("config_off_time_ms"))},
        now_());
    auto const number = [&job](char const *name) { return std::to_string(job.setting<std::uint32_t>(name)); };
    return "relay " + quoted(job.setting<std::string>("relay_target")) + " switched (mode " +
           number("config_mode") + ", normally " +
           (job.setting<bool>("config_normally_closed") ? "closed" : "open") + ", " +
           number("config_repeat_cycles") + " cycles, " + number("config_on_time_ms") + " ms on, " +
           number("config_off_time_ms") + " ms off)";
}

boost::json::object Runner::devices() const {
    boost::json::object told = devices_.told(now_());
    told["pictures"] = boost::json::array(pictures_.begin(), pictures_.end());
    return told;
}

std::string Runner::outboxName(Job const &job, char const *what, char const *ending) {
    auto const now = wall_().time_since_epoch();
    std::time_t const seconds = std::chrono::duration_cast<std::chrono::seconds>(now).count();
    auto const milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(now).count() % 1000;
    std::tm utc{};
    gmtime_r(&seconds, &utc);
    char moment[48];
    std::size_t const length = std::strftime(moment, sizeof moment, "%Y%m%dT%H%M%S", &utc);
    std::string const time =
        std::string(moment, length) + "." + std::to_string(1000 + milliseconds).substr(1);
    return std::string(what) + "-" + std::to_string(job.action_id) + "-" + time + "Z-" +
           std::to_string(++outbox_count_) + ending;
}

}  // namespace simulator::runners
