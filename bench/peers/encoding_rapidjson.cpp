// SPDX-License-Identifier: Apache-2.0
// RapidJSON as its users make it fast: documents in pools that are used again, and a writer without a document.

#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <array>
#include <stdexcept>

#include "peers/encoding.h"

namespace {

using Pool = rapidjson::MemoryPoolAllocator<>;
using Document = rapidjson::GenericDocument<rapidjson::UTF8<>, Pool, Pool>;
using Value = Document::ValueType;

std::string_view textOf(Value const &value) {
    return {value.GetString(), value.GetStringLength()};
}

class RapidEncoding : public Encoding {
  public:
    std::string_view relayCommand(unsigned int action_id) override {
        begin();
        member("command", "Get_relay_action");
        member("action_id", action_id);
        return end();
    }

    std::string_view listsCommand() override {
        begin();
        member("command", "Get_actions");
        return end();
    }

    std::string_view answer(std::string_view command) override {
        Document document = parse(command);
        std::string_view const method = textOf(find(document, "command"));
        if (method == "Get_relay_action" && find(document, "action_id").GetUint() == contents::action_id) {
            begin();
            member("command", "Get_relay_action");
            member("status", 0U);
            member("action_name", contents::action_name);
            member("relay_target", contents::relay_target);
            member("config_mode", contents::mode);
            member("config_normally_closed", contents::normally_closed);
            member("config_repeat_cycles", contents::repeat_cycles);
            member("config_on_time_ms", contents::on_time_ms);
            member("config_off_time_ms", contents::off_time_ms);
            return end();
        }
        if (method == "Get_actions") {
            begin();
            member("command", "Get_actions");
            member("status", 0U);
            member("action_id", contents::ids);
            member("action_type", contents::types);
            return end();
        }
        throw std::runtime_error("an unknown command");
    }

    void readRelay(std::string_view response, Relay &relay) override {
        Document document = parse(response);
        checkStatus(document);
        relay.setTexts(textOf(find(document, "action_name")), textOf(find(document, "relay_target")));
        relay.config_mode = find(document, "config_mode").GetUint();
        relay.config_normally_closed = find(document, "config_normally_closed").GetBool() ? 1 : 0;
        relay.config_repeat_cycles = find(document, "config_repeat_cycles").GetUint();
        relay.config_on_time_ms = find(document, "config_on_time_ms").GetUint();
        relay.config_off_time_ms = find(document, "config_off_time_ms").GetUint();
    }

    void readLists(std::string_view response, Lists &lists) override {
        Document document = parse(response);
        checkStatus(document);
        read(find(document, "action_id"), lists.ids);
        read(find(document, "action_type"), lists.types);
    }

    std::string_view event() override {
        begin();
        member("event", "Action_completed");
        member("action_id", contents::action_id);
        member("action_name", contents::action_name);
        member("success", true);
        return end();
    }

    void readEvent(std::string_view text, Event &event) override {
        Document document = parse(text);
        event.action_id = find(document, "action_id").GetUint();
        event.action_name = textOf(find(document, "action_name"));
        event.success = find(document, "success").GetBool();
    }

  private:
    Document parse(std::string_view text) {
        values_.Clear();
        stack_.Clear();
        Document document(&values_, 1024, &stack_);
        document.Parse(text.data(), text.size());
        if (document.HasParseError() || !document.IsObject()) {
            throw std::runtime_error("a text that is no JSON object");
        }
        return document;
    }

    static Value const &find(Value const &object, char const *name) {
        auto const found = object.FindMember(name);
        if (found == object.MemberEnd()) {
            throw std::runtime_error(std::string("no member ") + name);
        }
        return found->value;
    }

    static void checkStatus(Value const &object) {
        if (find(object, "status").GetUint() != 0) {
            throw std::runtime_error("the service refused");
        }
    }

    static void read(Value const &array, std::vector<unsigned int> &numbers) {
        numbers.clear();
        numbers.reserve(array.Size());
        for (Value const &number : array.GetArray()) {
            numbers.push_back(number.GetUint());
        }
    }

    void begin() {
        text_.Clear();
        writer_.Reset(text_);
        writer_.StartObject();
    }
    void member(char const *name, char const *text) {
        writer_.Key(name);
        writer_.String(text);
    }
    void member(char const *name, unsigned int number) {
        writer_.Key(name);
        writer_.Uint(number);
    }
    void member(char const *name, bool flag) {
        writer_.Key(name);
        writer_.Bool(flag);
    }
    template <std::size_t size>
    void member(char const *name, std::array<unsigned int, size> const &numbers) {
        writer_.Key(name);
        writer_.StartArray();
        for (unsigned int const number : numbers) {
            writer_.Uint(number);
        }
        writer_.EndArray();
    }
    std::string_view end() {
        writer_.EndObject();
        return {text_.GetString(), text_.GetSize()};
    }

    std::array<char, 16 * 1024> value_memory_;
    std::array<char, 16 * 1024> stack_memory_;
    Pool values_{value_memory_.data(), value_memory_.size()};
    Pool stack_{stack_memory_.data(), stack_memory_.size()};
    rapidjson::StringBuffer text_;
    rapidjson::Writer<rapidjson::StringBuffer> writer_;
};

}  // namespace

JsonLibrary const rapidjson_pooled = {"RapidJSON",
                                      [] { return std::unique_ptr<Encoding>(new RapidEncoding); }};
