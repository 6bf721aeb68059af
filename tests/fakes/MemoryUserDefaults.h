#pragma once

#include "platform/UserDefaults.h"

#include <map>
#include <mutex>
#include <string>
#include <utility>

namespace dorix {

/// Defaults that nothing keeps. Observers are called where the value is set.
class MemoryUserDefaults final : public UserDefaults {
 public:
    MemoryUserDefaults() = default;
    explicit MemoryUserDefaults(Json values) {
        for (auto& [key, value] : values.items()) values_[key] = value;
    }

    std::optional<Json> value(std::string_view key) const override {
        std::scoped_lock lock(mutex_);
        const auto found = values_.find(key);
        if (found == values_.end()) return std::nullopt;
        return found->second;
    }

    void set(std::string_view key, Json value) override { change(key, std::move(value)); }
    void remove(std::string_view key) override { change(key, std::nullopt); }

    Subscription observe(std::string_view key, Observer observer) override {
        return observers_[std::string(key)].add(std::move(observer));
    }

 private:
    void change(std::string_view key, std::optional<Json> to) {
        if (value(key) == to) return;
        {
            std::scoped_lock lock(mutex_);
            if (to) {
                values_[std::string(key)] = std::move(*to);
            } else {
                values_.erase(std::string(key));
            }
        }
        if (const auto found = observers_.find(key); found != observers_.end()) found->second.notify();
    }

    mutable std::mutex mutex_;
    std::map<std::string, Json, std::less<>> values_;  // guarded by mutex_
    std::map<std::string, Observers<>, std::less<>> observers_;
};

}  // namespace dorix
