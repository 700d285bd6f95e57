// SPDX-License-Identifier: Apache-2.0
// Method calls over sd-bus.

#include <poll.h>

#include "peers/peers.h"
#include "peers/sd_bus.h"

namespace {

using sdbus::Bus;
using sdbus::checked;

int answerRelay(sd_bus_message *call, void *, sd_bus_error *) {
    unsigned int action_id = 0;
    int const outcome = sd_bus_message_read(call, "u", &action_id);
    if (outcome < 0 || action_id != contents::action_id) {
        return -EINVAL;
    }
    return sd_bus_reply_method_return(call, "ssubuuu", contents::action_name, contents::relay_target,
                                      contents::mode, int{contents::normally_closed}, contents::repeat_cycles,
                                      contents::on_time_ms, contents::off_time_ms);
}

int answerLists(sd_bus_message *call, void *, sd_bus_error *) {
    sd_bus_message *reply = nullptr;
    int outcome = sd_bus_message_new_method_return(call, &reply);
    if (outcome >= 0) {
        outcome = sd_bus_message_append_array(reply, 'u', contents::ids.data(), sizeof contents::ids);
    }
    if (outcome >= 0) {
        outcome = sd_bus_message_append_array(reply, 'u', contents::types.data(), sizeof contents::types);
    }
    if (outcome >= 0) {
        outcome = sd_bus_send(nullptr, reply, nullptr);
    }
    sd_bus_message_unref(reply);
    return outcome;
}

#pragma GCC diagnostic push
// sd-bus's own macros.
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"
#pragma GCC diagnostic ignored "-Wpedantic"
sd_bus_vtable const methods[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("Get_relay_action", "u", "ssubuuu", answerRelay, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("Get_actions", "", "auau", answerLists, SD_BUS_VTABLE_UNPRIVILEGED), SD_BUS_VTABLE_END};
#pragma GCC diagnostic pop

void readRelay(sd_bus_message *reply, Relay &relay) {
    char const *name = nullptr;
    char const *target = nullptr;
    int normally_closed = 0;
    checked(
        sd_bus_message_read(reply, "ssubuuu", &name, &target, &relay.config_mode, &normally_closed,
                            &relay.config_repeat_cycles, &relay.config_on_time_ms, &relay.config_off_time_ms),
        "reading a relay");
    relay.setTexts(name, target);
    relay.config_normally_closed = normally_closed != 0 ? 1 : 0;
}

void readNumbers(sd_bus_message *reply, std::vector<unsigned int> &numbers) {
    void const *memory = nullptr;
    std::size_t size = 0;
    checked(sd_bus_message_read_array(reply, 'u', &memory, &size), "reading a list");
    auto const *const first = static_cast<unsigned int const *>(memory);
    numbers.assign(first, first + size / sizeof(unsigned int));
}

class SdBusCaller : public Caller {
  public:
    explicit SdBusCaller(std::string const &path) : bus_(path) {}

    void getRelay(Relay &relay) override {
        sdbus::Message reply;
        checked(sd_bus_call_method(bus_.get(), nullptr, sdbus::object_path, sdbus::interface_name,
                                   "Get_relay_action", nullptr, reply.out(), "u", contents::action_id),
                "Get_relay_action");
        readRelay(reply.get(), relay);
    }

    void getLists(Lists &lists) override {
        sdbus::Message reply;
        checked(sd_bus_call_method(bus_.get(), nullptr, sdbus::object_path, sdbus::interface_name,
                                   "Get_actions", nullptr, reply.out(), ""),
                "Get_actions");
        readNumbers(reply.get(), lists.ids);
        readNumbers(reply.get(), lists.types);
    }

    void flight(int calls) override {
        answered_ = 0;
        for (int call = 0; call < calls; ++call) {
            checked(sd_bus_call_method_async(bus_.get(), nullptr, nullptr, sdbus::object_path,
                                             sdbus::interface_name, "Get_relay_action", takeRelay, this, "u",
                                             contents::action_id),
                    "Get_relay_action");
        }
        while (answered_ < calls) {
            if (checked(sd_bus_process(bus_.get(), nullptr), "process") == 0) {
                checked(sd_bus_wait(bus_.get(), UINT64_MAX), "wait");
            }
        }
    }

  private:
    static int takeRelay(sd_bus_message *reply, void *caller, sd_bus_error *) {
        // An exception must not pass through a C library.
        try {
            Relay relay;
            readRelay(reply, relay);
            relay.check();
            ++static_cast<SdBusCaller *>(caller)->answered_;
            return 1;
        } catch (std::exception const &) {
            return -EBADMSG;
        }
    }

    Bus bus_;
    int answered_ = 0;
};

class SdBusPeer : public Peer {
  public:
    std::string name() const override { return "sd-bus"; }

    void serve(std::string const &path, std::function<void()> const &ready) const override {
        sdbus::Listening const listening(path);
        ready();
        std::vector<Bus> clients;
        std::vector<pollfd> waiting = {{listening.socket(), POLLIN, 0}};
        for (;;) {
            require(poll(waiting.data(), waiting.size(), -1) > 0 ? 0 : -1, "poll");
            if ((waiting[0].revents & POLLIN) != 0) {
                clients.push_back(listening.accept());
                checked(sd_bus_add_object_vtable(clients.back().get(), nullptr, sdbus::object_path,
                                                 sdbus::interface_name, methods, nullptr),
                        "object");
            }
            waiting.resize(1);
            for (Bus const &client : clients) {
                while (sd_bus_process(client.get(), nullptr) > 0) {
                }
                int const events = sd_bus_get_events(client.get());
                if (events >= 0) {
                    waiting.push_back({sd_bus_get_fd(client.get()), static_cast<short>(events), 0});
                }
            }
        }
    }

    std::unique_ptr<Caller> connect(std::string const &path) const override {
        return std::make_unique<SdBusCaller>(path);
    }
};

}  // namespace

std::unique_ptr<Peer> makeSdBusPeer() {
    return std::make_unique<SdBusPeer>();
}
