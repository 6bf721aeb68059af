#pragma once

#include "base/async/SerialExecutor.h"
#include "platform/UserDefaults.h"

#include <expected>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <system_error>

namespace dorix {

/// User defaults in one JSON file, an object by key. Every change is written soon after, on a thread of its
/// own, by replacing the file as a whole, so that a crash leaves the old or the new one. Several processes
/// may use one file: only the keys that were set here are written over what the file holds by then, and what
/// others wrote is taken over on that occasion. A file that cannot be understood, or is larger or more deeply
/// nested than any that was written here, is set aside under another name and the program starts with none of
/// it; where even that fails, nothing is written in this run. One that cannot be read is left as it is: what
/// is set is kept in memory, and written at the next change that finds it readable.
class JsonUserDefaults final : public UserDefaults {
 public:
    /// Reads the file, which need not exist. Observers are called on `main`, which must outlive this.
    JsonUserDefaults(Executor& main, std::filesystem::path file);
    /// Waits until what was set is written.
    ~JsonUserDefaults() override;

    std::optional<Json> value(std::string_view key) const override;
    void set(std::string_view key, Json value) override;
    void remove(std::string_view key) override;
    Subscription observe(std::string_view key, Observer observer) override;

 private:
    using ObserverTable = std::map<std::string, Observers<>, std::less<>>;
    /// By key the new value, or none for a key that was removed.
    using Changes = std::map<std::string, std::optional<Json>, std::less<>>;

    std::expected<std::optional<Json>, std::error_code> read();
    void setAside(const std::string& reason);
    void change(std::string_view key, std::optional<Json> value);
    void notify(const std::string& key);
    void write();
    std::error_code writeMerged(const Changes& changes);
    void adopt(const Json& written);

    Executor& main_;
    const std::filesystem::path file_;
    std::shared_ptr<ObserverTable> observers_ = std::make_shared<ObserverTable>();

    mutable std::mutex mutex_;
    Json values_ = Json::object();  // guarded by mutex_
    Changes pending_;               // guarded by mutex_: not in the file yet
    bool writeQueued_ = false;      // guarded by mutex_
    bool mayWrite_ = true;          // guarded by mutex_
    bool failureLogged_ = false;    // the writer's
    SerialExecutor writer_;         // last: it writes what is left when it goes
};

}  // namespace dorix
