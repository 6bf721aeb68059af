#pragma once

#include "base/Observable.h"
#include "base/async/Task.h"
#include "base/async/Timer.h"
#include "linux/loop/FdWatcher.h"
#include "linux/loop/FileDescriptor.h"

#include <systemd/sd-bus.h>

#include <expected>
#include <functional>
#include <list>
#include <memory>
#include <string>
#include <vector>

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
/// do not block; `call` does, for as long as it is told to at most. What is sent while there is no bus fails.
class BusConnection {
 public:
    /// The message belongs to the caller of the handler. A failed call is told as an error message, or as
    /// nullptr when it could not even be sent.
    using Handler = std::function<void(sd_bus_message* message)>;

    /// The user's session bus, or the computer's. One that is not there yet is joined later, and one that
    /// goes is joined again once it is back: then what was listened to and offered is so again, and calls
    /// under way have failed. It is tried every half minute, at first sooner; where the system names no bus,
    /// never.
    static std::unique_ptr<BusConnection> session(Executor& main, FdWatcher& watcher);
    static std::unique_ptr<BusConnection> system(Executor& main, FdWatcher& watcher);
    /// A bus that is joined once; nullptr when it cannot be. `onClosed` is posted once when the connection is
    /// lost, and not after destruction.
    static std::unique_ptr<BusConnection> openAddress(const std::string& address, Executor& main,
                                                      FdWatcher& watcher, std::function<void()> onClosed);

    BusConnection(const BusConnection&) = delete;
    BusConnection& operator=(const BusConnection&) = delete;
    ~BusConnection();

    /// Whether there is a bus that takes what is sent. It changes in a turn of the main loop of its own.
    Observable<bool> isJoined;

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

    /// The same; who lets go of the subscription is not told any more.
    Subscription ask(const sdbus::Message& request, Handler handler);

    /// The answer to a call; nullptr when it fails, at the latest after the usual time-out. The call is made
    /// when the task starts; letting go of the task leaves the answer to nobody.
    Task<sdbus::Message> answer(sdbus::Message request);

    /// Waits for the bus to greet us, up to `seconds`; whether it has.
    bool awaitReady(double seconds);

    /// Offers an interface at a path, as long as the connection lives. `object` is what the table's functions
    /// get, and must live as long. The functions must not call `call`.
    void addObject(const char* path, const char* interface, const sd_bus_vtable* table, void* object);

    /// Tells those who listen. The message is made by `fill`, which may do nothing.
    void emit(const char* path, const char* interface, const char* signal,
              const std::function<void(sd_bus_message*)>& fill);

    /// Calls the handler for every signal that the match rule takes, whoever sends it: a rule's sender does
    /// not keep others from addressing us. See BusService for signals that are to be believed.
    Subscription listen(const std::string& rule, Handler handler);

    /// Calls the handler when a name gets another owner, "" for none. `filter` is appended to the match rule.
    using OwnerChanged = std::function<void(const std::string& name, const std::string& owner)>;
    Subscription listenToOwners(const std::string& filter, OwnerChanged handler);

    /// Handles what has come in already. Handlers must not call `call`.
    void pump();

 private:
    struct Listener;
    struct Offer {
        const char* path;
        const char* interface;
        const sd_bus_vtable* table;
        void* object;
    };
    struct Pending {
        Handler handler;
        sdbus::Slot slot;
        bool done = false;
    };

    /// Connects, or says why not, as sd-bus does.
    using Opener = std::function<std::expected<sdbus::Bus, int>()>;

    BusConnection(Opener open, Executor& main, FdWatcher& watcher);

    static int onReply(sd_bus_message* message, void* pending, sd_bus_error* error);
    static int onSignal(sd_bus_message* message, void* listener, sd_bus_error* error);
    static std::unique_ptr<BusConnection> lasting(Opener open, Executor& main, FdWatcher& watcher);
    int join();
    void leave();
    void joinOrTryLater();
    void rejoinLater();
    void addMatch(Listener& listener);
    void offer(const Offer& offer);
    Pending& remember(Handler handler);
    void awaitNext() const;
    void reportClosed();

    Executor& main_;
    FdWatcher& watcher_;
    const Opener open_;
    std::function<void()> onClosed_;        // of a bus that is joined once
    std::shared_ptr<BusConnection*> self_;  // what is posted holds it weakly
    sdbus::Bus bus_;                        // one that was never opened where there is none
    bool isLeaving_ = false;
    double joinedAt_ = 0;
    double delay_ = 0;  // before it is tried again
    Timer rejoin_;
    std::list<Pending> pending_;
    std::vector<std::weak_ptr<Listener>> listeners_;
    std::vector<Offer> offers_;
    const FileDescriptor timer_;
    const FileDescriptor events_;  // readable when the bus or the timer has something to do
    Subscription watch_;
};

}  // namespace dorix
