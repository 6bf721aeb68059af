#include "linux/xdg/JsonUserDefaults.h"

#include "base/Log.h"
#include "linux/xdg/AtomicFile.h"

#include <ctime>
#include <utility>

namespace dorix {

namespace {

/// Far more than settings come to. JSON takes many times its size once it is read.
constexpr std::size_t largestFile = 4UZ * 1024 * 1024;
constexpr int deepestNesting = 64;

/// Whether arrays and objects lie in each other so deeply that what goes through them runs out of stack.
bool isTooDeep(std::string_view json) {
    int depth = 0;
    bool inString = false;
    for (std::size_t i = 0; i < json.size(); ++i) {
        const char c = json[i];
        if (inString && c == '\\') ++i;
        if (c == '"') inString = !inString;
        if (inString) continue;
        if (c == '[' || c == '{') ++depth;
        if (c == ']' || c == '}') --depth;
        if (depth > deepestNesting) return true;
    }
    return false;
}

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
    auto held = read();
    if (held && *held) values_ = std::move(**held);
    if (held) return;
    logLine("the settings file cannot be read and stays as it is: " + held.error().message());
}

JsonUserDefaults::~JsonUserDefaults() = default;

/// What the file holds; none when there is no file, or not any more because it was damaged. The error is that
/// of a file that may well be whole.
std::expected<std::optional<Json>, std::error_code> JsonUserDefaults::read() {
    const auto text = readFile(file_, largestFile);
    if (!text && text.error() == std::errc::no_such_file_or_directory) return std::nullopt;
    if (!text && text.error() == std::errc::file_too_large) {
        setAside("is too large");
        return std::nullopt;
    }
    if (!text) return std::unexpected(text.error());
    Json parsed = isTooDeep(*text) ? Json() : Json::parse(*text, nullptr, /*allow_exceptions=*/false);
    if (parsed.is_object()) return parsed;
    setAside("is damaged");
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
    logLine("the settings file " + reason + "; " +
            (error ? "changes will not be kept: " + error.message() : "it is kept as " + aside.string()));
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
    const auto error = writeMerged(changes);
    if (error && !failureLogged_) logLine("the settings could not be saved: " + error.message());
    failureLogged_ = static_cast<bool>(error);
    if (!error) return;
    std::scoped_lock lock(mutex_);
    for (const auto& change : changes) pending_.insert(change);  // unless it has been set anew since
}

std::error_code JsonUserDefaults::writeMerged(const Changes& changes) {
    const auto alone = lockFolder(folderOf(file_));
    auto held = read();
    if (!held) return held.error();
    auto merged = std::move(*held);
    {
        std::scoped_lock lock(mutex_);
        if (!mayWrite_) return {};
        // Without a file to go by, all that is known goes into a new one.
        if (!merged) merged = values_;
    }
    applyChanges(changes, *merged);
    const auto text = merged->dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
    // It would be set aside at the next start, with all that is in it.
    if (text.size() > largestFile) return std::make_error_code(std::errc::file_too_large);
    const auto error = replaceFile(file_, text);
    if (!error) adopt(*merged);
    return error;
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
