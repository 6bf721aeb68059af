#include "linux/pulse/PulseConnection.h"

#include <sys/eventfd.h>

#include <algorithm>
#include <utility>
#include <vector>

namespace dorix {

namespace {
constexpr int firstRetrySeconds = 1;
constexpr int lastRetrySeconds = 30;

PulseConnection::Source sourceOf(const pa_source_info& info) {
    return {.index = info.index,
            .format = {static_cast<double>(info.sample_spec.rate), info.sample_spec.channels},
            .channels = info.channel_map,
            .name = info.name,
            .description = info.description != nullptr ? info.description : info.name};
}

/// Requests answer through callbacks; nobody keeps the operation itself.
void forget(pa_operation* operation) {
    if (operation) pa_operation_unref(operation);
}
}  // namespace

void PulseConnection::CloseContext::operator()(pa_context* context) const {
    pa_context_set_state_callback(context, nullptr, nullptr);
    pa_context_set_subscribe_callback(context, nullptr, nullptr);
    pa_context_disconnect(context);
    pa_context_unref(context);
}

PulseConnection::PulseConnection(Executor& main, std::string server, Listed listed)
    : main_(main),
      server_(std::move(server)),
      listed_(std::move(listed)),
      wish_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      loop_(pa_threaded_mainloop_new()) {
    pa_threaded_mainloop_set_name(loop_.get(), "dorix-pulse");
    const auto wished = [](pa_mainloop_api*, pa_io_event*, int wish, pa_io_event_flags_t, void* self) {
        eventfd_t count = 0;
        ::eventfd_read(wish, &count);
        static_cast<PulseConnection*>(self)->connect();
    };
    wished_ = api().io_new(&api(), wish_.get(), PA_IO_EVENT_INPUT, wished, this);
    retryNow();
    pa_threaded_mainloop_start(loop_.get());
}

PulseConnection::~PulseConnection() {
    {
        const Lock lock(*this);
        // Nothing can ask for a connection any more.
        cancelRetry();
        api().io_free(wished_);
        context_.reset();
    }
    pa_threaded_mainloop_stop(loop_.get());
}

std::optional<PulseConnection::Source> PulseConnection::source() const {
    std::scoped_lock lock(mutex_);
    auto found = std::ranges::find(microphones_, chosen_, &Source::name);
    const bool isChosen = found != microphones_.end();
    if (!isChosen) found = std::ranges::find(microphones_, default_, &Source::name);
    if (found == microphones_.end()) return std::nullopt;
    auto source = *found;
    source.isChosen = isChosen;
    return source;
}

void PulseConnection::choose(std::string name) {
    {
        std::scoped_lock lock(mutex_);
        if (name == chosen_) return;
        chosen_ = std::move(name);
    }
    if (!isReady()) return;
    const Lock lock(*this);
    refresh();
}

pa_context* PulseConnection::readyContext() const {
    const bool ready = context_ && pa_context_get_state(context_.get()) == PA_CONTEXT_READY;
    return ready ? context_.get() : nullptr;
}

// Under the lock one would wait for as long as a server is looked up.
void PulseConnection::retryNow() {
    if (!isReady()) ::eventfd_write(wish_.get(), 1);
}

void PulseConnection::connect() {
    if (context_) return;
    cancelRetry();
    const std::unique_ptr<pa_proplist, decltype(&pa_proplist_free)> properties(pa_proplist_new(),
                                                                               pa_proplist_free);
    pa_proplist_sets(properties.get(), PA_PROP_APPLICATION_ID, "dorix");
    pa_proplist_sets(properties.get(), PA_PROP_APPLICATION_NAME, "DORIX");
    context_.reset(pa_context_new_with_proplist(&api(), "DORIX", properties.get()));
    const auto changed = [](pa_context*, void* self) {
        static_cast<PulseConnection*>(self)->contextChanged();
    };
    pa_context_set_state_callback(context_.get(), changed, this);
    const char* server = server_.empty() ? nullptr : server_.c_str();
    // Without starting a server of our own: the session does that, and it would be waited for here.
    if (pa_context_connect(context_.get(), server, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0) lose();
}

void PulseConnection::contextChanged() {
    switch (pa_context_get_state(context_.get())) {
        case PA_CONTEXT_READY:
            retrySeconds_ = 0;
            isReady_ = true;
            subscribe();
            refresh();
            break;
        case PA_CONTEXT_FAILED:
        case PA_CONTEXT_TERMINATED:
            lose();
            break;
        default:
            break;
    }
}

void PulseConnection::lose() {
    if (!context_) return;
    isReady_ = false;
    context_.reset();
    refreshing_ = false;
    refreshAgain_ = false;
    scheduleRetry();
    found_.clear();
    foundDefault_.clear();
    endRefresh();
}

void PulseConnection::scheduleRetry() {
    cancelRetry();
    retrySeconds_ = std::clamp(retrySeconds_ * 2, firstRetrySeconds, lastRetrySeconds);
    timeval when{};
    pa_gettimeofday(&when);
    pa_timeval_add(&when, static_cast<pa_usec_t>(retrySeconds_) * PA_USEC_PER_SEC);
    const auto again = [](pa_mainloop_api*, pa_time_event*, const timeval*, void* self) {
        static_cast<PulseConnection*>(self)->connect();
    };
    retry_ = api().time_new(&api(), &when, again, this);
}

void PulseConnection::cancelRetry() {
    if (auto* retry = std::exchange(retry_, nullptr)) api().time_free(retry);
}

void PulseConnection::subscribe() {
    const auto happened = [](pa_context*, pa_subscription_event_type_t event, std::uint32_t index,
                             void* self) { static_cast<PulseConnection*>(self)->sourceEvent(event, index); };
    pa_context_set_subscribe_callback(context_.get(), happened, this);
    // NOLINTBEGIN(clang-analyzer-optin.core.EnumCastOutOfRange): masks are sums
    const auto mask =
        static_cast<pa_subscription_mask_t>(PA_SUBSCRIPTION_MASK_SERVER | PA_SUBSCRIPTION_MASK_SOURCE);
    // NOLINTEND(clang-analyzer-optin.core.EnumCastOutOfRange)
    forget(pa_context_subscribe(context_.get(), mask, nullptr, nullptr));
}

void PulseConnection::sourceEvent(pa_subscription_event_type_t event, std::uint32_t index) {
    const bool ofSource = (event & PA_SUBSCRIPTION_EVENT_FACILITY_MASK) == PA_SUBSCRIPTION_EVENT_SOURCE;
    const bool isChange = (event & PA_SUBSCRIPTION_EVENT_TYPE_MASK) == PA_SUBSCRIPTION_EVENT_CHANGE;
    const auto known = source();
    // Another source's volume is nothing to us.
    if (ofSource && isChange && known && known->index != index) return;
    refresh();
}

void PulseConnection::refresh() {
    if (!readyContext()) {
        refreshed_.notify();
        return;
    }
    if (std::exchange(refreshing_, true)) {
        refreshAgain_ = true;
        return;
    }
    const auto answer = [](pa_context*, const pa_server_info* info, void* self) {
        static_cast<PulseConnection*>(self)->readServer(info);
    };
    forget(pa_context_get_server_info(context_.get(), answer, this));
}

void PulseConnection::readServer(const pa_server_info* info) {
    found_.clear();
    foundDefault_ = info && info->default_source_name ? info->default_source_name : "";
    const auto answer = [](pa_context*, const pa_source_info* source, int end, void* userdata) {
        auto& self = *static_cast<PulseConnection*>(userdata);
        if (end != 0) {
            self.endRefresh();
        } else if (source) {
            self.readSource(*source);
        }
    };
    forget(pa_context_get_source_info_list(context_.get(), answer, this));
}

/// Without a microphone the server's default is the monitor of a sink: what the computer plays.
void PulseConnection::readSource(const pa_source_info& info) {
    if (info.monitor_of_sink == PA_INVALID_INDEX) found_.push_back(sourceOf(info));
}

void PulseConnection::endRefresh() {
    listed_(found_);
    {
        std::scoped_lock lock(mutex_);
        default_ = std::move(foundDefault_);
        microphones_ = std::move(found_);
    }
    found_.clear();
    foundDefault_.clear();
    refreshing_ = false;
    if (std::exchange(refreshAgain_, false)) {
        refresh();
    } else {
        refreshed_.notify();
    }
}

}  // namespace dorix
