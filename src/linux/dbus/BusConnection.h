#pragma once

#include "base/Observable.h"
#include "base/async/Task.h"
#include "linux/loop/FdWatcher.h"
#include "linux/loop/FileDescriptor.h"

#include <systemd/sd-bus.h>

#include <expected>
#include <functional>
#include <list>
#include <memory>
#include <string>

namespace dorix {

namespace sdbus {

struct Release {
    void operator()(sd_bus* bus) const { sd_bus_close_unref(bus); }
    void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
    void operator()(sd_bus_slot* slot) const { sd_bus_slot_unref(slot); }
};

using Bus = std::unique_ptr<sd_bus, Release>;
using Message = std::unique_ptr<sd_bus_message, Release>;
using Slot = std::unique_ptr<sd_bus_slot, Release>;

}  // namespace sdbus

/// One connection to a message bus, fed by the main loop. Main executor only. Opening, sending and listening
/// do not block; `call` does, for as long as it is told to at most.
class BusConnection {
 public:
    /// The message belongs to the caller of the handler. A failed call is told as an error message, or as
    /// nullptr when it could not even be sent.
    using Handler = std::function<void(sd_bus_message* message)>;

    /// The user's session bus; nullptr when there is none. `onClosed` is posted once when the connection is
    /// lost, and not after destruction.
    static std::unique_ptr<BusConnection> openSession(Executor& main, FdWatcher& watcher,
                                                      std::function<void()> onClosed);
    static std::unique_ptr<BusConnection> openAddress(const std::string& address, Executor& main,
                                                      FdWatcher& watcher, std::function<void()> onClosed);

    BusConnection(sdbus::Bus bus, Executor& main, FdWatcher& watcher, std::function<void()> onClosed);

    /// Whether calls can be made: the bus has greeted us and is still there.
    bool isReady() const;

    /// nullptr when it cannot be made.
    sdbus::Message newCall(const std::string& destination, const std::string& path, const char* interface,
                           const char* member) const;

    /// Waits for the answer up to `seconds`. The error is the D-Bus error's name: NoReply when time is up,
    /// Disconnected when the bus has gone.
    std::expected<sdbus::Message, std::string> call(const sdbus::Message& request, double seconds);

    /// The handler is called at the latest after sd-bus's usual time-out, 25 s.
    void callLater(const sdbus::Message& request, Handler handler);

    /// The answer to a call; nullptr when it fails, at the latest after the usual time-out. The call is made
    /// when the task starts; letting go of the task leaves the answer to nobody.
    Task<sdbus::Message> answer(sdbus::Message request);

    /// Waits for the bus to greet us, up to `seconds`; whether it has.
    bool awaitReady(double seconds);

    /// Offers an interface at a path, as long as the connection lives. `object` is what the table's functions
    /// get, and must live as long. The functions must not call `call`.
    bool addObject(const char* path, const char* interface, const sd_bus_vtable* table, void* object);

    /// Tells those who listen. The message is made by `fill`, which may do nothing.
    void emit(const char* path, const char* interface, const char* signal,
              const std::function<void(sd_bus_message*)>& fill);

    /// Calls the handler for every signal that the match rule takes.
    Subscription listen(const char* rule, Handler handler);

    /// Handles what has come in already. Handlers must not call `call`.
    void pump();

 private:
    struct Pending {
        Handler handler;
        sdbus::Slot slot;
        bool done = false;
    };

    static int onReply(sd_bus_message* message, void* pending, sd_bus_error* error);
    Pending& remember(Handler handler);
    void awaitNext() const;
    void reportClosed();

    Executor& main_;
    std::function<void()> onClosed_;
    std::shared_ptr<BusConnection*> self_;  // what is posted holds it weakly
    sdbus::Bus bus_;
    std::list<Pending> pending_;
    const FileDescriptor timer_;
    const FileDescriptor events_;  // readable when the bus or the timer has something to do
    Subscription watch_;
};

}  // namespace dorix
