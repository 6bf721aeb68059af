#pragma once

#include "adapters/harness/EventLoop.h"
#include "adapters/harness/OtherProgram.h"
#include "fakes/TemporaryFolder.h"
#include "linux/dbus/BusConnection.h"

#include <expected>
#include <functional>
#include <list>
#include <map>
#include <optional>
#include <string>

namespace dorix {

/// A session bus of a test's own, which is the session's for as long as it lives.
class SessionBus {
 public:
    /// Whether what is installed can be started over it.
    enum class Services { none, installed };

    explicit SessionBus(Services services = Services::none);

    std::string address() const { return "unix:path=" + (folder_.path() / "bus").string(); }
    /// Also the home of what is started over it.
    const TemporaryFolder& folder() const { return folder_; }
    const OtherProgram& daemon() const { return *daemon_; }

    void kill() { daemon_.reset(); }
    /// Starts it, also again at the same address.
    void start();

 private:
    const Services services_;
    TemporaryFolder folder_;
    Environment session_{{{"DBUS_SESSION_BUS_ADDRESS", address()}}};
    std::optional<OtherProgram> daemon_;
};

/// The string at the message's place, whether it is in a variant or not.
std::string nextString(sd_bus_message* message);

/// Another program on a bus, served by the test's loop, with no code of ours in between.
class BusPeer {
 public:
    /// Answers a call; the number is sd-bus's, 1 for one that gets no answer.
    using Answer = std::function<int(sd_bus_message* call)>;
    using Script = std::map<std::string, Answer>;
    using Reply = std::expected<sdbus::Message, std::string>;

    /// On the session's bus, unless another one is named.
    explicit BusPeer(EventLoop& loop, const std::string& address = {});
    /// A service, which answers by the calls' names, and takes its own once it is able to.
    BusPeer(EventLoop& loop, const char* name, const char* path, Script script);
    BusPeer(const BusPeer&) = delete;
    BusPeer& operator=(const BusPeer&) = delete;

    /// Answers at another path as well.
    void answerAt(const char* path, Script script);

    /// Calls a method and waits for the answer, or the error's name.
    template <typename... Values>
    Reply call(const std::string& destination, const std::string& path, const char* interface,
               const char* member, const char* types = "", Values... values) {
        sd_bus_message* request = nullptr;
        sd_bus_message_new_method_call(bus_.get(), &request, destination.c_str(), path.c_str(), interface,
                                       member);
        sd_bus_message_append(request, types, values...);
        return send(sdbus::Message(request));
    }

    template <typename... Values>
    void emit(const char* path, const char* interface, const char* signal, const char* types,
              Values... values) {
        sd_bus_emit_signal(bus_.get(), path, interface, signal, types, values...);
        sd_bus_flush(bus_.get());
    }

    /// Its unique name.
    std::string name() const {
        const char* unique = "";
        sd_bus_get_unique_name(bus_.get(), &unique);
        return unique;
    }

    /// To one program, whether it has asked for such signals or not.
    template <typename... Values>
    void emitTo(const std::string& destination, const char* path, const char* interface, const char* signal,
                const char* types, Values... values) {
        sd_bus_message* raw = nullptr;
        sd_bus_message_new_signal(bus_.get(), &raw, path, interface, signal);
        const sdbus::Message message(raw);
        sd_bus_message_append(raw, types, values...);
        sd_bus_send_to(bus_.get(), raw, destination.c_str(), nullptr);
        sd_bus_flush(bus_.get());
    }

    /// Leaves the bus, with what it has sent on its way.
    void vanish() {
        sd_bus_flush(bus_.get());
        watch_.reset();
        sd_bus_close(bus_.get());
    }

 private:
    Reply send(const sdbus::Message& request);
    void serve();

    EventLoop& loop_;
    std::list<Script> scripts_;
    sdbus::Bus bus_;
    Subscription watch_;
};

}  // namespace dorix
