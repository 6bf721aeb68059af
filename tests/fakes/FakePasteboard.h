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
    Task<std::vector<Item>> pasteboardItems() override {
        log.emplace_back("read");
        auto read = items;
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

 private:
    void add(std::string_view type, Bytes data) {
        if (!mine_) return;
        ++changeCount_;
        if (items.empty()) items.emplace_back();
        items.front().emplace_back(type, std::move(data));
    }

    std::int64_t changeCount_ = 7;
    bool mine_ = false;
};

}  // namespace dorix
