#pragma once

#include "base/async/Completion.h"
#include "platform/SavePanel.h"

namespace dorix {

/// A dialog that the test answers.
class FakeSavePanel final : public SavePanel {
 public:
    Task<std::optional<std::filesystem::path>> run(Request wanted) override {
        request = std::move(wanted);
        answer = {};
        co_return co_await answer;
    }

    Request request;
    Completion<std::optional<std::filesystem::path>> answer;
};

}  // namespace dorix
