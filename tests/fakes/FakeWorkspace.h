#pragma once

#include "platform/Workspace.h"

#include <optional>
#include <string>
#include <vector>

namespace dorix {

class FakeWorkspace final : public Workspace {
 public:
    std::optional<RunningApplication> frontmost;
    std::string own = "es.pelmora.dorix";
    std::vector<RunningApplication> activated;

    std::optional<RunningApplication> frontmostApplication() const override { return frontmost; }
    std::string ownBundleIdentifier() const override { return own; }
    void activate(const RunningApplication& app) override {
        activated.push_back(app);
        frontmost = app;
    }
};

}  // namespace dorix
