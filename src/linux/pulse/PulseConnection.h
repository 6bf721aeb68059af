#pragma once

#include "base/Observable.h"
#include "base/async/Executor.h"
#include "linux/loop/FileDescriptor.h"
#include "platform/AudioEngine.h"

#include <pulse/pulseaudio.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace dorix {

/// The one connection to the sound server, with the thread that serves it, and what the server's sources are.
/// Made and destroyed on the main executor; the destructor joins the thread.
class PulseConnection {
 public:
    struct Source {
        std::uint32_t index = PA_INVALID_INDEX;
        AudioFormat format;
        pa_channel_map channels{};
        std::string name;         // the same whenever it is there
        std::string description;  // for people
        bool isChosen = false;    // by the user, and not for being the default
    };

    /// Keeps the connection's thread out of its callbacks. Held for moments only by either side, but while a
    /// server is looked up: take it on the main executor only when there is one.
    class Lock {
     public:
        explicit Lock(const PulseConnection& connection) : loop_(connection.loop_.get()) {
            pa_threaded_mainloop_lock(loop_);
        }
        Lock(const Lock&) = delete;
        Lock& operator=(const Lock&) = delete;
        ~Lock() { pa_threaded_mainloop_unlock(loop_); }

     private:
        pa_threaded_mainloop* loop_;
    };

    /// Told of the microphones, on the connection's thread, whenever what is known of them is fresh.
    using Listed = std::function<void(const std::vector<Source>& microphones)>;

    PulseConnection(Executor& main, std::string server, Listed listed = [](const auto&) {});
    ~PulseConnection();
    PulseConnection(const PulseConnection&) = delete;
    PulseConnection& operator=(const PulseConnection&) = delete;

    Executor& main() const { return main_; }

    /// The source to record from as last heard of: the chosen one, or the default where that is not there.
    /// None without a server, or when the default is no microphone. Any thread.
    std::optional<Source> source() const;

    /// Chooses the source of that name, or with an empty one none. Main executor.
    void choose(std::string name);

    /// Whether the server is there, as last heard of. Any thread.
    bool isReady() const { return isReady_; }

    /// Tries a server that is not there again at once, in the background. Any thread.
    void retryNow();

    // Under the lock, or on the connection's thread:

    /// None unless the server is there.
    pa_context* readyContext() const;
    /// The observer is told, on the connection's thread and under its lock, that what is known of the sources
    /// is fresh, or that the server is gone.
    Subscription onRefresh(std::function<void()> observer) { return refreshed_.add(std::move(observer)); }

    /// Asks the server about its sources, then tells the observers.
    void refresh();

 private:
    struct FreeLoop {
        void operator()(pa_threaded_mainloop* loop) const { pa_threaded_mainloop_free(loop); }
    };
    struct CloseContext {
        void operator()(pa_context* context) const;
    };

    pa_mainloop_api& api() const { return *pa_threaded_mainloop_get_api(loop_.get()); }
    void connect();
    void lose();
    void scheduleRetry();
    void cancelRetry();
    void contextChanged();
    void subscribe();
    void sourceEvent(pa_subscription_event_type_t event, std::uint32_t index);
    void readServer(const pa_server_info* info);
    void readSource(const pa_source_info& info);
    void endRefresh();

    Executor& main_;
    const std::string server_;
    const Listed listed_;
    const FileDescriptor wish_;  // readable when a connection is wished for
    std::atomic<bool> isReady_ = false;
    const std::unique_ptr<pa_threaded_mainloop, FreeLoop> loop_;

    // The connection's thread, or under the lock:
    std::unique_ptr<pa_context, CloseContext> context_;
    pa_io_event* wished_ = nullptr;
    pa_time_event* retry_ = nullptr;
    int retrySeconds_ = 0;
    bool refreshing_ = false;
    bool refreshAgain_ = false;
    std::string foundDefault_;
    std::vector<Source> found_;
    Observers<> refreshed_;

    mutable std::mutex mutex_;
    // Guarded by mutex_:
    std::string chosen_;
    std::string default_;
    std::vector<Source> microphones_;
};

}  // namespace dorix
