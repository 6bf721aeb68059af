#pragma once

#include "platform/Pasteboard.h"

#include <string>
#include <vector>

namespace dorix {

/// A clipboard in memory. Reading takes `readSeconds` of the task's executor and gives what was there when it
/// began, so that a test can change it under the reading.
class FakePasteboard final : public Pasteboard {
 public:
    std::vector<Item> items;
    double readSeconds = 0;
    /// What was done, in order: "read", "string", "clear", "setString ...", "setData TYPE", "write N",
    /// "foreign".
    std::vector<std::string> log;

    /// Another application takes the clipboard.
    void copyElsewhere(std::vector<Item> copied);
    void copyElsewhere(std::string_view text) {
        copyElsewhere({{{std::string(stringType), std::string(text)}}});
    }

    std::int64_t changeCount() const override { return changeCount_; }
    Task<std::vector<Item>> pasteboardItems() override;
    Task<std::optional<std::string>> string() override;
    void clearContents() override;
    void setString(std::string text) override;
    void setData(Bytes data, std::string_view type) override;
    void writeObjects(std::vector<Item> objects) override;

 private:
    bool begun();

    std::int64_t changeCount_ = 7;
    bool mine_ = false;
};

}  // namespace dorix
