#pragma once

#include "base/async/Sleep.h"
#include "platform/Pasteboard.h"

#include <string>
#include <utility>
#include <vector>

namespace dorix {

/// A clipboard in memory. Reading takes `readSeconds` of the task's executor and gives what was there when it
/// began, so that a test can change it under the reading.
class FakePasteboard final : public Pasteboard {
 public:
    std::vector<Item> items;
    /// How much of it reading gives.
    Reading::State readable = Reading::State::complete;
    double readSeconds = 0;
    /// What was done, in order: "read", "string", "clear", "setString ...", "setData TYPE", "write N".
    std::vector<std::string> log;

    /// Another application takes the clipboard.
    void copyElsewhere(std::string_view text) {
        items = {{{std::string(stringType), std::string(text)}}};
        mine_ = false;
        ++changeCount_;
    }

    std::int64_t changeCount() const override { return changeCount_; }
    std::int64_t currentChangeCount() override {
        if (const auto asked = std::exchange(onCountAsked, nullptr)) asked();
        return changeCount_;
    }
    /// Called once, just before the answer.
    std::function<void()> onCountAsked;
    Task<Reading> pasteboardItems() override {
        log.emplace_back("read");
        Reading read{items.empty() ? Reading::State::empty : readable, items};
        if (read.state == Reading::State::unreadable) read.items.clear();
        if (readSeconds > 0) co_await sleep(readSeconds);
        co_return read;
    }
    Task<std::optional<std::string>> string() override {
        log.emplace_back("string");
        std::optional<std::string> text;
        for (const auto& item : items) {
            for (const auto& [type, data] : item) {
                if (type == stringType && !text) text = data;
            }
        }
        if (readSeconds > 0) co_await sleep(readSeconds);
        co_return text;
    }
    void clearContents() override {
        log.emplace_back("clear");
        items.clear();
        mine_ = true;
        ++changeCount_;
    }
    void setString(std::string text) override {
        log.push_back("setString " + text);
        add(stringType, std::move(text));
    }
    void setData(Bytes data, std::string_view type) override {
        log.push_back("setData " + std::string(type));
        add(type, std::move(data));
    }
    void writeObjects(std::vector<Item> objects) override {
        log.push_back("write " + std::to_string(objects.size()));
        if (!mine_) return;
        ++changeCount_;
        for (auto& object : objects) items.push_back(std::move(object));
    }

    bool holdsOwnContents() override {
        if (const auto asked = std::exchange(onHoldsAsked, nullptr)) asked();
        return mine_ && !items.empty();
    }
    /// Called once, just before the answer.
    std::function<void()> onHoldsAsked;
    Subscription observeFetches(std::function<void(const Fetch&)> observer) override {
        return fetches_.add(std::move(observer));
    }
    void keepThroughCrash(const std::vector<Item>&) override {}

    /// An application fetches the text, if it is ours; what it is given.
    std::string fetch(const RunningApplication& by, double at) {
        const std::string text = items.empty() ? "" : items.front().front().second;
        if (holdsOwnContents()) fetches_.notify({by, at});
        return text;
    }

 private:
    void add(std::string_view type, Bytes data) {
        if (!mine_) return;
        ++changeCount_;
        if (items.empty()) items.emplace_back();
        items.front().emplace_back(type, std::move(data));
    }

    std::int64_t changeCount_ = 7;
    bool mine_ = false;
    Observers<Fetch> fetches_;
};

}  // namespace dorix
