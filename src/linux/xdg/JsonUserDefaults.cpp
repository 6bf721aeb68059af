#include "linux/xdg/JsonUserDefaults.h"

#include "base/Log.h"
#include "linux/xdg/AtomicFile.h"

#include <ctime>
#include <utility>

namespace dorix {

namespace {

void applyChanges(const std::map<std::string, std::optional<Json>, std::less<>>& changes, Json& values) {
    for (const auto& [key, value] : changes) {
        if (value) {
            values[key] = *value;
        } else {
            values.erase(key);
        }
    }
}

/// The folder that the file really lies in, made if need be.
std::filesystem::path folderOf(const std::filesystem::path& file) {
    std::error_code error;
    const auto folder = std::filesystem::weakly_canonical(file, error).parent_path();
    std::filesystem::create_directories(folder, error);
    return folder;
}

}  // namespace

JsonUserDefaults::JsonUserDefaults(Executor& main, std::filesystem::path file)
    : main_(main), file_(std::move(file)) {
    values_ = read().value_or(Json::object());
}

JsonUserDefaults::~JsonUserDefaults() = default;

/// What the file holds; none when there is no file, or not any more because it was damaged.
std::optional<Json> JsonUserDefaults::read() {
    std::error_code error;
    if (!std::filesystem::exists(file_, error) && !error) return std::nullopt;
    const auto text = readFile(file_);
    Json parsed = text ? Json::parse(*text, nullptr, /*allow_exceptions=*/false) : Json();
    if (parsed.is_object()) return parsed;
    setAside(text ? "está dañado" : "no se puede leer");
    return std::nullopt;
}

void JsonUserDefaults::setAside(const std::string& reason) {
    const std::string base = file_.string() + ".damaged-" + std::to_string(std::time(nullptr));
    std::filesystem::path aside = base;
    std::error_code error;
    for (int i = 2; std::filesystem::exists(aside, error); ++i) aside = base + "-" + std::to_string(i);
    std::filesystem::rename(file_, aside, error);
    {
        std::scoped_lock lock(mutex_);
        mayWrite_ = !error;
    }
    logLine("el archivo de ajustes " + reason + "; " +
            (error ? "no se guardarán cambios: " + error.message() : "se guarda como " + aside.string()));
}

std::optional<Json> JsonUserDefaults::value(std::string_view key) const {
    std::scoped_lock lock(mutex_);
    const auto found = values_.find(key);
    if (found == values_.end()) return std::nullopt;
    return *found;
}

void JsonUserDefaults::set(std::string_view key, Json value) { change(key, std::move(value)); }

void JsonUserDefaults::remove(std::string_view key) { change(key, std::nullopt); }

Subscription JsonUserDefaults::observe(std::string_view key, Observer observer) {
    return (*observers_)[std::string(key)].add(std::move(observer));
}

void JsonUserDefaults::change(std::string_view key, std::optional<Json> value) {
    const std::string name(key);
    {
        std::scoped_lock lock(mutex_);
        const auto found = values_.find(name);
        const bool same = value ? found != values_.end() && *found == *value : found == values_.end();
        if (same) return;
        applyChanges({{name, value}}, values_);
        pending_[name] = std::move(value);
        if (mayWrite_ && !std::exchange(writeQueued_, true)) writer_.post([this] { write(); });
    }
    notify(name);
}

void JsonUserDefaults::notify(const std::string& key) {
    main_.post([weak = std::weak_ptr(observers_), key] {
        const auto observers = weak.lock();
        if (!observers) return;
        if (const auto found = observers->find(key); found != observers->end()) found->second.notify();
    });
}

void JsonUserDefaults::write() {
    Changes changes;
    {
        std::scoped_lock lock(mutex_);
        writeQueued_ = false;
        changes.swap(pending_);
    }
    writeMerged(changes);
}

void JsonUserDefaults::writeMerged(const Changes& changes) {
    const auto alone = lockFolder(folderOf(file_));
    auto merged = read();
    {
        std::scoped_lock lock(mutex_);
        if (!mayWrite_) return;
        // Without a file to go by, all that is known goes into a new one.
        if (!merged) merged = values_;
    }
    applyChanges(changes, *merged);
    const auto text = merged->dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
    const auto error = replaceFile(file_, text);
    if (error && !failureLogged_) logLine("no se pudieron guardar los ajustes: " + error.message());
    failureLogged_ = static_cast<bool>(error);
    if (!error) return adopt(*merged);
    std::scoped_lock lock(mutex_);
    for (const auto& change : changes) pending_.insert(change);  // unless it has been set anew since
}

/// What other processes have written becomes ours as well, but for what has been set here meanwhile.
void JsonUserDefaults::adopt(const Json& written) {
    Json before;
    Json now = written;
    {
        std::scoped_lock lock(mutex_);
        applyChanges(pending_, now);
        if (now == values_) return;
        before = std::exchange(values_, now);
    }
    for (const auto& [key, value] : now.items()) {
        const auto old = before.find(key);
        if (old == before.end() || *old != value) notify(key);
    }
    for (const auto& [key, value] : before.items()) {
        if (!now.contains(key)) notify(key);
    }
}

}  // namespace dorix
