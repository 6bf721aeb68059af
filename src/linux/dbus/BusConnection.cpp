#include "linux/dbus/BusConnection.h"

#include "base/async/Completion.h"

#include <sys/epoll.h>
#include <sys/timerfd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <ctime>
#include <string_view>
#include <utility>

namespace dorix {

namespace {

constexpr const char* noReply = "org.freedesktop.DBus.Error.NoReply";
constexpr const char* disconnected = "org.freedesktop.DBus.Error.Disconnected";
constexpr std::uint64_t usualTimeout = 0;
constexpr std::uint64_t never = UINT64_MAX;  // of sd-bus's points in time

/// Before a bus that has gone is tried again: twice as long each time, up to the longest.
constexpr double firstDelay = 1.0;  // seconds
constexpr double longestDelay = 30.0;

sdbus::Bus unopened() {
    sd_bus* bus = nullptr;
    sd_bus_new(&bus);
    return sdbus::Bus(bus);
}

template <int (*open)(sd_bus**)>
std::expected<sdbus::Bus, int> opened() {
    sd_bus* bus = nullptr;
    if (const int code = open(&bus); code < 0) return std::unexpected(code);
    return sdbus::Bus(bus);
}

std::expected<sdbus::Bus, int> openedAt(const std::string& address) {
    auto bus = unopened();
    int code = sd_bus_set_address(bus.get(), address.c_str());
    if (code >= 0) code = sd_bus_set_bus_client(bus.get(), 1);
    if (code >= 0) code = sd_bus_start(bus.get());
    if (code < 0) return std::unexpected(code);
    return bus;
}

std::string errorName(const sd_bus_error& error, int code) {
    if (code == -ETIMEDOUT) return noReply;
    if (code == -ENOTCONN || code == -ECONNRESET) return disconnected;
    return error.name ? error.name : "org.freedesktop.DBus.Error.Failed";
}

}  // namespace

struct BusConnection::Listener : std::enable_shared_from_this<Listener> {
    std::string rule;
    Handler handler;
    sdbus::Slot slot;
};

std::unique_ptr<BusConnection> BusConnection::session(Executor& main, FdWatcher& watcher) {
    return lasting(opened<sd_bus_open_user>, main, watcher);
}

std::unique_ptr<BusConnection> BusConnection::system(Executor& main, FdWatcher& watcher) {
    return lasting(opened<sd_bus_open_system>, main, watcher);
}

std::unique_ptr<BusConnection> BusConnection::lasting(Opener open, Executor& main, FdWatcher& watcher) {
    std::unique_ptr<BusConnection> made(new BusConnection(std::move(open), main, watcher));
    made->joinOrTryLater();
    return made;
}

std::unique_ptr<BusConnection> BusConnection::openAddress(const std::string& address, Executor& main,
                                                          FdWatcher& watcher,
                                                          std::function<void()> onClosed) {
    std::unique_ptr<BusConnection> made(
        new BusConnection([address] { return openedAt(address); }, main, watcher));
    if (made->join() < 0) return nullptr;
    made->onClosed_ = std::move(onClosed);
    return made;
}

BusConnection::BusConnection(Opener open, Executor& main, FdWatcher& watcher)
    : main_(main),
      watcher_(watcher),
      open_(std::move(open)),
      self_(std::make_shared<BusConnection*>(this)),
      bus_(unopened()),
      delay_(firstDelay),
      rejoin_(main),
      timer_(timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK)),
      events_(epoll_create1(EPOLL_CLOEXEC)) {
    epoll_event due{.events = EPOLLIN, .data = {}};
    epoll_ctl(events_.get(), EPOLL_CTL_ADD, timer_.get(), &due);
}

BusConnection::~BusConnection() = default;

int BusConnection::join() {
    auto bus = open_();
    if (!bus) return bus.error();
    bus_ = std::move(*bus);
    joinedAt_ = main_.now();
    for (const auto& given : offers_) offer(given);
    for (const auto& weak : listeners_) {
        if (const auto listener = weak.lock()) addMatch(*listener);
    }
    awaitNext();
    watch_ = watcher_.watchReadable(events_.get(), [this] { pump(); });
    isJoined.set(true);
    return 0;
}

void BusConnection::leave() {
    isLeaving_ = false;
    for (const auto& weak : listeners_) {
        if (const auto listener = weak.lock()) listener->slot.reset();
    }
    // Of a bus that spoke nonsense, they have not been told yet.
    for (auto& call : std::exchange(pending_, {})) {
        call.slot.reset();
        if (!call.done) std::exchange(call.handler, nullptr)(nullptr);
    }
    bus_ = unopened();
    isJoined.set(false);
    if (onClosed_) return std::exchange(onClosed_, nullptr)();
    // One that greets and goes at once is not to keep us busy.
    if (main_.now() - joinedAt_ > longestDelay) delay_ = firstDelay;
    rejoinLater();
}

/// Ever more seldom: a bus that is not there may never come.
void BusConnection::rejoinLater() {
    rejoin_.once(delay_, [this] { joinOrTryLater(); });
    delay_ = std::min(delay_ * 2, longestDelay);
}

void BusConnection::joinOrTryLater() {
    constexpr int noAddress = -ENOMEDIUM;
    const int code = join();
    if (code < 0 && code != noAddress) rejoinLater();
}

bool BusConnection::isReady() const { return sd_bus_is_ready(bus_.get()) > 0; }

sdbus::Message BusConnection::newCall(const std::string& destination, const std::string& path,
                                      const char* interface, const char* member) const {
    sd_bus_message* message = nullptr;
    // Names and paths come from other programs; a malformed one only fails its own call.
    sd_bus_message_new_method_call(bus_.get(), &message, destination.c_str(), path.c_str(), interface,
                                   member);
    return sdbus::Message(message);
}

std::expected<sdbus::Message, std::string> BusConnection::call(const sdbus::Message& request,
                                                               double seconds) {
    if (!request || seconds <= 0) return std::unexpected(noReply);
    // Before the greeting sd-bus would wait for it without a limit.
    if (!isReady()) return std::unexpected(disconnected);
    sd_bus_error error{};
    sd_bus_message* reply = nullptr;
    const auto microseconds = static_cast<std::uint64_t>(seconds * 1e6);
    const int code =
        sd_bus_call(bus_.get(), request.get(), std::max<std::uint64_t>(microseconds, 1), &error, &reply);
    sdbus::Message answer(reply);
    std::string name = code < 0 ? errorName(error, code) : "";
    sd_bus_error_free(&error);
    // What came in while waiting has left the socket: the main loop would not tell of it.
    pump();
    if (code < 0) return std::unexpected(std::move(name));
    return answer;
}

void BusConnection::callLater(const sdbus::Message& request, Handler handler) {
    auto& pending = remember(std::move(handler));
    sd_bus_slot* slot = nullptr;
    const int code =
        request ? sd_bus_call_async(bus_.get(), &slot, request.get(), onReply, &pending, usualTimeout)
                : -EINVAL;
    pending.slot.reset(slot);
    awaitNext();
    if (code >= 0) return;
    pending.done = true;
    std::exchange(pending.handler, nullptr)(nullptr);
}

Subscription BusConnection::ask(const sdbus::Message& request, Handler handler) {
    auto asking = std::make_shared<Handler>(std::move(handler));
    callLater(request, [weak = std::weak_ptr(asking)](sd_bus_message* reply) {
        if (const auto told = weak.lock()) (*told)(reply);
    });
    return Subscription(std::move(asking));
}

Task<sdbus::Message> BusConnection::answer(sdbus::Message request) {
    Completion<sdbus::Message> answer;
    callLater(request, [answer](sd_bus_message* reply) {
        const bool failed = reply == nullptr || sd_bus_message_is_method_error(reply, nullptr) != 0;
        answer.complete(sdbus::Message(failed ? nullptr : sd_bus_message_ref(reply)));
    });
    co_return co_await std::move(answer);
}

bool BusConnection::awaitReady(double seconds) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
    while (!isReady() && sd_bus_is_open(bus_.get()) > 0) {
        const std::chrono::duration<double> left = deadline - std::chrono::steady_clock::now();
        if (left.count() <= 0) return false;
        // One step at a time: what comes after the greeting is for the main loop.
        if (sd_bus_process(bus_.get(), nullptr) == 0)
            sd_bus_wait(bus_.get(), static_cast<std::uint64_t>(left.count() * 1e6));
    }
    awaitNext();
    return isReady();
}

void BusConnection::addObject(const char* path, const char* interface, const sd_bus_vtable* table,
                              void* object) {
    offer(offers_.emplace_back(path, interface, table, object));
}

void BusConnection::offer(const Offer& offer) {
    sd_bus_add_object_vtable(bus_.get(), nullptr, offer.path, offer.interface, offer.table, offer.object);
}

void BusConnection::emit(const char* path, const char* interface, const char* signal,
                         const std::function<void(sd_bus_message*)>& fill) {
    sd_bus_message* raw = nullptr;
    if (sd_bus_message_new_signal(bus_.get(), &raw, path, interface, signal) < 0) return;
    const sdbus::Message message(raw);
    fill(raw);
    sd_bus_send(bus_.get(), raw, nullptr);
    awaitNext();
}

Subscription BusConnection::listen(const std::string& rule, Handler handler) {
    const auto listener = std::make_shared<Listener>();
    listener->rule = rule;
    listener->handler = std::move(handler);
    std::erase_if(listeners_, [](const auto& other) { return other.expired(); });
    listeners_.push_back(listener);
    addMatch(*listener);
    awaitNext();
    return Subscription(listener);
}

Subscription BusConnection::listenToOwners(const std::string& filter, OwnerChanged handler) {
    constexpr std::string_view theBus = "org.freedesktop.DBus";
    const auto rule =
        "type='signal',sender='org.freedesktop.DBus',interface='org.freedesktop.DBus',"
        "member='NameOwnerChanged'" +
        filter;
    return listen(rule, [theBus, handler = std::move(handler)](sd_bus_message* signal) {
        const char* name = "";
        const char* before = "";
        const char* after = "";
        if (sd_bus_message_get_sender(signal) != theBus) return;
        if (sd_bus_message_read(signal, "sss", &name, &before, &after) > 0) handler(name, after);
    });
}

void BusConnection::addMatch(Listener& listener) {
    if (sd_bus_is_open(bus_.get()) <= 0) return;
    sd_bus_slot* slot = nullptr;
    sd_bus_add_match_async(bus_.get(), &slot, listener.rule.c_str(), onSignal, nullptr, &listener);
    listener.slot.reset(slot);
}

int BusConnection::onSignal(sd_bus_message* message, void* listener, sd_bus_error*) {
    // Held meanwhile: the handler may let go of it.
    const auto told = static_cast<Listener*>(listener)->shared_from_this();
    told->handler(message);
    return 0;
}

void BusConnection::pump() {
    int handled = 0;
    do {
        handled = sd_bus_process(bus_.get(), nullptr);
    } while (handled > 0);
    if (handled < 0 || sd_bus_is_open(bus_.get()) <= 0) return reportClosed();
    awaitNext();
}

/// sd-bus wants to be called when it can read, often also when it can write or when a call's time is up: what
/// it waits for changes with all that it is asked to do.
void BusConnection::awaitNext() const {
    if (sd_bus_is_open(bus_.get()) <= 0) return;
    const int fd = sd_bus_get_fd(bus_.get());
    const int wanted = sd_bus_get_events(bus_.get());
    epoll_event event{.events = wanted >= 0 ? static_cast<std::uint32_t>(wanted) : EPOLLIN, .data = {}};
    // The first time, or after another of the bus's addresses has been tried.
    if (epoll_ctl(events_.get(), EPOLL_CTL_MOD, fd, &event) != 0 && errno == ENOENT)
        epoll_ctl(events_.get(), EPOLL_CTL_ADD, fd, &event);

    std::uint64_t due = never;
    if (sd_bus_get_timeout(bus_.get(), &due) < 0) due = never;
    itimerspec alarm{};  // off
    if (due != never) {
        alarm.it_value.tv_sec = static_cast<std::time_t>(due / 1'000'000);
        alarm.it_value.tv_nsec = static_cast<long>(due % 1'000'000 * 1000) + 1;  // zero would be off
    }
    timerfd_settime(timer_.get(), TFD_TIMER_ABSTIME, &alarm, nullptr);
}

int BusConnection::onReply(sd_bus_message* message, void* pending, sd_bus_error*) {
    auto& call = *static_cast<Pending*>(pending);
    call.done = true;
    std::exchange(call.handler, nullptr)(message);
    return 0;
}

BusConnection::Pending& BusConnection::remember(Handler handler) {
    std::erase_if(pending_, [](const Pending& pending) { return pending.done; });
    return pending_.emplace_back(std::move(handler));
}

void BusConnection::reportClosed() {
    watch_.reset();
    if (std::exchange(isLeaving_, true)) return;
    // Whoever is told may drop this connection, which may be in the middle of a call.
    main_.post([weak = std::weak_ptr(self_)] {
        if (const auto self = weak.lock()) (*self)->leave();
    });
}

}  // namespace dorix
