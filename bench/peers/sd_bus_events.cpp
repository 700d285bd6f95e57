// SPDX-License-Identifier: Apache-2.0
// Signals over sd-bus, one to each subscriber's connection.

#include "peers/peers.h"
#include "peers/sd_bus.h"

namespace {

using sdbus::Bus;
using sdbus::checked;

class SdBusPublisher : public Publisher {
  public:
    explicit SdBusPublisher(std::string const &path) : listening_(path) {}

    void waitFor(int subscribers) override {
        for (int count = 0; count < subscribers; ++count) {
            buses_.push_back(listening_.accept());
            // Takes what the subscriber introduces itself with.
            flushOne(buses_.back());
        }
    }

    void publish() override {
        for (Bus const &bus : buses_) {
            checked(
                sd_bus_emit_signal(bus.get(), sdbus::object_path, sdbus::interface_name, "Action_completed",
                                   "usb", contents::action_id, contents::action_name, 1),
                "signal");
        }
    }

    void flush() override {
        for (Bus const &bus : buses_) {
            flushOne(bus);
        }
    }

  private:
    static void flushOne(Bus const &bus) { checked(sd_bus_flush(bus.get()), "flush"); }

    sdbus::Listening listening_;
    std::vector<Bus> buses_;
};

class SdBusSubscriber : public Subscriber {
  public:
    explicit SdBusSubscriber(std::string const &path) : bus_(path) {}

    void receive(Event &event) override {
        for (;;) {
            sdbus::Message message;
            int const progress = checked(sd_bus_process(bus_.get(), message.out()), "process");
            if (message.get() != nullptr &&
                sd_bus_message_is_signal(message.get(), sdbus::interface_name, "Action_completed") > 0) {
                char const *name = nullptr;
                int success = 0;
                checked(sd_bus_message_read(message.get(), "usb", &event.action_id, &name, &success),
                        "event");
                event.action_name = name;
                event.success = success != 0;
                return;
            }
            if (progress == 0) {
                checked(sd_bus_wait(bus_.get(), UINT64_MAX), "wait");
            }
        }
    }

  private:
    Bus bus_;
};

class SdBusEventPeer : public EventPeer {
  public:
    std::string name() const override { return "sd-bus"; }
    std::unique_ptr<Publisher> publisher(std::string const &path) const override {
        return std::make_unique<SdBusPublisher>(path);
    }
    std::unique_ptr<Subscriber> subscribe(std::string const &path) const override {
        return std::make_unique<SdBusSubscriber>(path);
    }
};

}  // namespace

std::unique_ptr<EventPeer> makeSdBusEventPeer() {
    return std::make_unique<SdBusEventPeer>();
}
