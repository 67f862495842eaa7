// A notification service of a test's own, on a connection of its own to the bus, which answers as
// the test wants it. It acts only while the test lets it.
#pragma once

#include <gtest/gtest.h>
#include <systemd/sd-bus.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace tallowbrook::host {

class FakeService {
 public:
    struct Shown {
        std::uint32_t replaces = 0;
        std::string title;
        std::string body;
        std::vector<std::string> actions;
        std::map<std::string, std::string> hints;  // those that are texts
        int urgency = -1;
        std::int32_t expires = 0;
        std::uint32_t id = 0;  // that it was given
    };
    enum class Answers { atOnce, later, withAnError };

    std::vector<std::string> capabilities{"body", "actions"};
    Answers answers = Answers::atOnce;             // to notifications
    Answers answersToQuestions = Answers::atOnce;  // what it can do
    std::vector<Shown> shown;
    std::vector<std::uint32_t> closed;
    int questions = 0;

    FakeService() {
        sd_bus* bus = nullptr;
        EXPECT_GE(sd_bus_open_user(&bus), 0);
        bus_.reset(bus);
        EXPECT_GE(sd_bus_add_filter(bus, nullptr, take, this), 0);
        EXPECT_GE(sd_bus_request_name(bus, "org.freedesktop.Notifications", 0), 0);
    }

    void act() const {
        while (sd_bus_process(bus_.get(), nullptr) > 0) continue;
    }

    // What was held back, in the order in which it came.
    void answerNow() {
        answers = answersToQuestions = Answers::atOnce;
        for (auto& message : std::exchange(held_, {})) answer(message.get());
    }

    void emitClick(std::uint32_t id) const { emitClick(bus_.get(), nullptr, id); }
    void emitClosed(std::uint32_t id) const {
        EXPECT_GE(
            sd_bus_emit_signal(bus_.get(), path, interface, "NotificationClosed", "uu", id, 2U), 0);
    }

    // As any program can: to all, or to one that it names.
    static void emitClick(sd_bus* bus, const char* receiver, std::uint32_t id) {
        sd_bus_message* signal = nullptr;
        EXPECT_GE(sd_bus_message_new_signal(bus, &signal, path, interface, "ActionInvoked"), 0);
        EXPECT_GE(sd_bus_message_append(signal, "us", id, "default"), 0);
        if (receiver != nullptr) {
            EXPECT_GE(sd_bus_message_set_destination(signal, receiver), 0);
        }
        EXPECT_GE(sd_bus_send(bus, signal, nullptr), 0);
        sd_bus_message_unref(signal);
    }

    const std::string& client() const { return client_; }

 private:
    static constexpr const char* path = "/org/freedesktop/Notifications";
    static constexpr const char* interface = "org.freedesktop.Notifications";

    static int take(sd_bus_message* message, void* self, sd_bus_error*) {
        auto& service = *static_cast<FakeService*>(self);
        if (sd_bus_message_is_method_call(message, interface, nullptr) <= 0) return 0;
        service.client_ = sd_bus_message_get_sender(message);
        const bool notifies = sd_bus_message_is_method_call(message, nullptr, "Notify") > 0;
        const auto how = notifies ? service.answers : service.answersToQuestions;
        if (sd_bus_message_is_method_call(message, nullptr, "GetCapabilities") > 0)
            ++service.questions;
        if (notifies) service.read(message);
        if (how == Answers::later)
            service.held_.emplace_back(sd_bus_message_ref(message), sd_bus_message_unref);
        else if (how == Answers::withAnError)
            sd_bus_reply_method_errorf(message, "org.example.Trouble", "no room");
        else
            service.answer(message);
        return 1;
    }

    void answer(sd_bus_message* message) {
        const auto is = [message](const char* member) {
            return sd_bus_message_is_method_call(message, nullptr, member) > 0;
        };
        if (is("GetServerInformation"))
            sd_bus_reply_method_return(message, "ssss", "fake", "test", "2.0", "1.2");
        if (is("GetCapabilities")) {
            sd_bus_message* reply = nullptr;
            EXPECT_GE(sd_bus_message_new_method_return(message, &reply), 0);
            EXPECT_GE(sd_bus_message_open_container(reply, 'a', "s"), 0);
            for (const auto& capability : capabilities)
                EXPECT_GE(sd_bus_message_append(reply, "s", capability.c_str()), 0);
            EXPECT_GE(sd_bus_message_close_container(reply), 0);
            EXPECT_GE(sd_bus_send(bus_.get(), reply, nullptr), 0);
            sd_bus_message_unref(reply);
        }
        if (is("Notify")) {
            auto& notification = shown.at(answered_++);
            notification.id = notification.replaces != 0 ? notification.replaces : ++lastID_;
            sd_bus_reply_method_return(message, "u", notification.id);
        }
        if (is("CloseNotification")) {
            std::uint32_t id = 0;
            EXPECT_GE(sd_bus_message_read(message, "u", &id), 0);
            closed.push_back(id);
            emitClosed(id);
        }
    }

    void read(sd_bus_message* message) {
        Shown& notification = shown.emplace_back();
        const char* program = nullptr;
        const char* icon = nullptr;
        const char* title = nullptr;
        const char* body = nullptr;
        EXPECT_GE(sd_bus_message_read(message, "susss", &program, &notification.replaces, &icon,
                                      &title, &body),
                  0);
        notification.title = title;
        notification.body = body;
        const char* text = nullptr;
        EXPECT_GE(sd_bus_message_enter_container(message, 'a', "s"), 0);
        while (sd_bus_message_read_basic(message, 's', &text) > 0)
            notification.actions.emplace_back(text);
        EXPECT_GE(sd_bus_message_exit_container(message), 0);
        EXPECT_GE(sd_bus_message_enter_container(message, 'a', "{sv}"), 0);
        while (sd_bus_message_enter_container(message, 'e', "sv") > 0) {
            const char* name = nullptr;
            const char* type = nullptr;
            EXPECT_GE(sd_bus_message_read(message, "s", &name), 0);
            EXPECT_GE(sd_bus_message_peek_type(message, nullptr, &type), 0);
            if (std::string{type} == "s") {
                EXPECT_GE(sd_bus_message_read(message, "v", "s", &text), 0);
                notification.hints[name] = text;
            } else if (std::string{name} == "urgency") {
                std::uint8_t urgency = 0;
                EXPECT_GE(sd_bus_message_read(message, "v", "y", &urgency), 0);
                notification.urgency = urgency;
            } else {
                EXPECT_GE(sd_bus_message_skip(message, "v"), 0);
                notification.hints[name] = "given";
            }
            EXPECT_GE(sd_bus_message_exit_container(message), 0);
        }
        EXPECT_GE(sd_bus_message_exit_container(message), 0);
        EXPECT_GE(sd_bus_message_read(message, "i", &notification.expires), 0);
    }

    struct Closer {
        void operator()(sd_bus* bus) const { sd_bus_flush_close_unref(bus); }
    };
    std::unique_ptr<sd_bus, Closer> bus_;
    std::vector<std::unique_ptr<sd_bus_message, decltype(&sd_bus_message_unref)>> held_;
    std::size_t answered_ = 0;
    std::uint32_t lastID_ = 0;
    std::string client_;
};

}  // namespace tallowbrook::host
