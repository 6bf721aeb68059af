#pragma once

#include "base/Json.h"
#include "base/Observable.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace dorix {

/// The user's settings and small state, by key; kept across runs. Any thread, but observers: they are added
/// on the main executor and called there. Nothing throws: a value that cannot be kept on disk holds for this
/// run.
class UserDefaults {
 public:
    using Observer = std::function<void()>;

    virtual ~UserDefaults() = default;

    virtual std::optional<Json> value(std::string_view key) const = 0;
    virtual void set(std::string_view key, Json value) = 0;
    virtual void remove(std::string_view key) = 0;

    /// Called after `key` was given another value or removed.
    virtual Subscription observe(std::string_view key, Observer observer) = 0;

    /// The value if it has that type; a value of another type counts as absent.
    std::optional<bool> boolean(std::string_view key) const;
    std::optional<double> number(std::string_view key) const;
    std::optional<std::string> string(std::string_view key) const;
};

}  // namespace dorix
