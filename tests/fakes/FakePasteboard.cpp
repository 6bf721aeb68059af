#include "fakes/FakePasteboard.h"

#include "base/async/Sleep.h"

namespace dorix {

void FakePasteboard::copyElsewhere(std::vector<Item> copied) {
    log.emplace_back("foreign");
    items = std::move(copied);
    mine_ = false;
    ++changeCount_;
}

Task<std::vector<Pasteboard::Item>> FakePasteboard::pasteboardItems() {
    log.emplace_back("read");
    auto read = items;
    if (readSeconds > 0) co_await sleep(readSeconds);
    co_return read;
}

Task<std::optional<std::string>> FakePasteboard::string() {
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

void FakePasteboard::clearContents() {
    log.emplace_back("clear");
    items.clear();
    mine_ = true;
    ++changeCount_;
}

void FakePasteboard::setString(std::string text) {
    log.push_back("setString " + text);
    if (begun()) items.front().emplace_back(stringType, std::move(text));
}

void FakePasteboard::setData(Bytes data, std::string_view type) {
    log.push_back("setData " + std::string(type));
    if (begun()) items.front().emplace_back(type, std::move(data));
}

void FakePasteboard::writeObjects(std::vector<Item> objects) {
    log.push_back("write " + std::to_string(objects.size()));
    if (!mine_) return;
    ++changeCount_;
    for (auto& object : objects) items.push_back(std::move(object));
}

/// Whether there is an item of our own to add to.
bool FakePasteboard::begun() {
    if (!mine_) return false;
    ++changeCount_;
    if (items.empty()) items.emplace_back();
    return true;
}

}  // namespace dorix
