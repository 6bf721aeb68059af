#pragma once

#include "base/Error.h"
#include "context/ScreenCapture.h"
#include "platform/PrivacyGrants.h"
#include "platform/ScreenContent.h"
#include "reading/helper/ReadingHelper.h"

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace dorix {

/// Takes pictures of windows, and of a display where an application has none that counts. Main executor.
class WindowCapture final : public ScreenCapture {
 public:
    class CaptureError final : public Error {
     public:
        enum class Case { permission, nothing };

        explicit CaptureError(Case kind) : kind_(kind) {}

        Case kind() const { return kind_; }
        std::string localizedDescription() const override;
        const char* what() const noexcept override { return "CaptureError"; }

     private:
        Case kind_;
    };

    /// All of them outlive this.
    struct Parts {
        Executor& executor;  // the main one
        Executor& worker;    // on which pictures are packed
        PrivacyGrants& grants;
        ScreenContent& screen;
        HelperProcesses& helpers;
        std::int32_t ownProcess = 0;  // whose windows are not in the picture of a display
        /// Those of the user, the most wanted first ("es-ES", "en").
        std::function<std::vector<std::string>()> languages;
    };

    explicit WindowCapture(Parts parts)
        : parts_(std::move(parts)), reader_(parts_.executor, parts_.helpers) {}

    /// Throws CaptureError.
    Task<Shot> capture(std::optional<RunningApplication> app) override;
    /// Takes some seconds, and half a minute at most.
    Task<std::string> text(Shot shot) override;

 private:
    Task<std::optional<ScreenImage>> image(std::optional<RunningApplication> app);

    const Parts parts_;
    ReadingHelper reader_;
};

}  // namespace dorix
