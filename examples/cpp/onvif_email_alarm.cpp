// SPDX-License-Identifier: Apache-2.0
// Has a mail sent when the camera reports motion: creates the action and the trigger, binds them, hands the service such
// an event, waits until it has run the action, and cleans up.
#include <cstdio>
#include <cstdlib>
#include <future>
#include <korvo/action_engine.hpp>

namespace {

constexpr char motion[] = "tns1:VideoSource/MotionAlarm";
std::vector<korvo::Namespace> const namespaces = {{"tns1", "http://www.onvif.org/ver10/topics"}};

/// Waits for the mail; the events of this action come here.
void tryItOut(korvo::ActionEngine const &engine, korvo::TriggerId trigger, korvo::ActionId action) {
    std::promise<bool> completed;
    bool is_first = true;
    korvo::Subscription const subscription =
        engine
            .on_action_completed([&](korvo::ActionCompleted const &event) {
                if (event.action_id == action && is_first) {
                    is_first = false;
                    completed.set_value(event.success);
                }
            })
            .value();
    korvo::OnvifEvent event;
    event.topic = motion;
    event.message = "<tt:Message xmlns:tt=\"http://www.onvif.org/ver10/schema\"><tt:Data/></tt:Message>";
    event.namespaces = namespaces;
    engine.onvif_event(event).value();
    auto sent = completed.get_future();
    if (sent.wait_for(std::chrono::seconds(10)) != std::future_status::ready || !sent.get()) {
        throw std::runtime_error("the service has not run the action; its log says why");
    }
    std::printf("Trigger %u has fired; the service has run action %u\n", korvo::number(trigger),
                korvo::number(action));
}

}  // namespace

int main() {
    try {
        korvo::ActionEngine const engine = korvo::ActionEngine::open({"onvif_email_alarm"}).value();
        korvo::EmailAction mail;
        mail.action_name = "motion alarm";
        mail.smtp_server = "mail.example.org";
        mail.to_addresses = {"guard@example.org"};
        mail.from_address = "camera@example.org";
        mail.subject = "Motion at the door";
        mail.body = "The camera saw something move.";
        mail.attach_jpeg = true;
        mail.include_event = true;
        korvo::ActionId const action = engine.create_email_action(mail).value();

        korvo::OnvifTrigger trigger;
        trigger.trigger_name = "motion";
        trigger.topic_filter = motion;
        trigger.topic_filter_dialect = "http://www.onvif.org/ver10/tev/topicExpression/ConcreteSet";
        trigger.namespaces = namespaces;
        korvo::TriggerId const trigger_id = engine.create_onvif_trigger(trigger).value();
        engine.create_association(trigger_id, action).value();

        korvo::EmailAction const kept = engine.get_email_action(action).value();
        for (std::string const &recipient : kept.to_addresses) {
            std::printf("\"%s\" goes to %s through %s\n", kept.subject.c_str(), recipient.c_str(),
                        kept.smtp_server.c_str());
        }
        tryItOut(engine, trigger_id, action);
        engine.delete_trigger(trigger_id).value();
        engine.delete_action(action).value();
        return EXIT_SUCCESS;
    } catch (std::exception const &error) {
        std::fprintf(stderr, "onvif_email_alarm: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
