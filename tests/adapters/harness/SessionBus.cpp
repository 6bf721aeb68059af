#include "adapters/harness/SessionBus.h"

#include <fstream>
#include <stdexcept>
#include <utility>

namespace dorix {

SessionBus::SessionBus(Services services) : services_(services) { start(); }

void SessionBus::start() {
    const auto file = folder_.path() / "session.conf";
    std::ofstream(file) << "<busconfig><type>session</type><listen>" << address() << "</listen>"
                        << (services_ == Services::installed ? "<standard_session_servicedirs/>" : "")
                        << "<auth>EXTERNAL</auth><policy context=\"default\"><allow send_destination=\"*\"/>"
                           "<allow receive_sender=\"*\"/><allow own=\"*\"/></policy></busconfig>";
    const std::string folder = folder_.path();
    // Without a display nothing that is started leaves a trace on the screen's root window.
    daemon_.emplace(std::vector<std::string>{"dbus-daemon", "--nofork", "--nopidfile", "--print-address=1",
                                             "--config-file=" + file.string()},
                    Variables{{"DISPLAY", ""},
                              {"DBUS_SESSION_BUS_ADDRESS", ""},
                              {"AT_SPI_BUS_ADDRESS", ""},
                              {"XDG_RUNTIME_DIR", folder},
                              {"HOME", folder},
                              {"GSETTINGS_BACKEND", "memory"}});
    if (!eventually([this] { return daemon_->output().ends_with('\n'); })) throw std::runtime_error("no bus");
}

std::string nextString(sd_bus_message* message) {
    const char* text = "";
    if (sd_bus_message_read(message, "s", &text) < 0) sd_bus_message_read(message, "v", "s", &text);
    return text;
}

BusPeer::BusPeer(EventLoop& loop, const std::string& address) : loop_(loop) {
    sd_bus* bus = nullptr;
    if (address.empty()) {
        sd_bus_open_user(&bus);
    } else {
        sd_bus_new(&bus);
        sd_bus_set_address(bus, address.c_str());
        sd_bus_set_bus_client(bus, 1);
        sd_bus_start(bus);
    }
    bus_.reset(bus);
    watch_ = loop.main.watchReadable(sd_bus_get_fd(bus), [this] { serve(); });
    serve();
}

BusPeer::BusPeer(EventLoop& loop, const char* name, const char* path, Script script) : BusPeer(loop) {
    answerAt(path, std::move(script));
    sd_bus_request_name(bus_.get(), name, 0);
    serve();
}

void BusPeer::answerAt(const char* path, Script script) {
    const auto answer = [](sd_bus_message* call, void* known, sd_bus_error*) {
        const auto& script = *static_cast<Script*>(known);
        const auto found = script.find(sd_bus_message_get_member(call));
        return found == script.end() ? 0 : found->second(call);
    };
    sd_bus_add_object(bus_.get(), nullptr, path, answer, &scripts_.emplace_back(std::move(script)));
}

BusPeer::Reply BusPeer::send(const sdbus::Message& request) {
    std::optional<Reply> reply;
    const auto take = [](sd_bus_message* message, void* into, sd_bus_error*) {
        const auto* error = sd_bus_message_get_error(message);
        auto& answer = *static_cast<std::optional<Reply>*>(into);
        answer =
            error ? Reply(std::unexpect, error->name) : Reply(sdbus::Message(sd_bus_message_ref(message)));
        return 0;
    };
    sd_bus_slot* slot = nullptr;
    sd_bus_call_async(bus_.get(), &slot, request.get(), take, &reply, 0);
    const sdbus::Slot pending(slot);
    serve();
    loop_.runUntil([&] { return reply.has_value(); });
    return reply ? std::move(*reply) : Reply(std::unexpect, "no answer");
}

void BusPeer::serve() {
    while (sd_bus_process(bus_.get(), nullptr) > 0) continue;
    sd_bus_flush(bus_.get());
}

}  // namespace dorix
