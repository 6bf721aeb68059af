#pragma once

#include "adapters/harness/OtherProgram.h"

#include <stdexcept>
#include <string>

namespace dorix {

/// An X server of a test's own, without a window manager.
class XServer {
 public:
    /// `screen` is "1280x800x24", say.
    explicit XServer(const std::string& screen)
        : program_({"Xvfb", "-displayfd", "1", "-screen", "0", screen, "-nolisten", "tcp", "-noreset"}) {
        if (!eventually([this] { return program_.output().ends_with('\n'); }))
            throw std::runtime_error("no X server");
    }

    std::string display() const {
        const auto output = program_.output();
        return ":" + output.substr(0, output.size() - 1);
    }

 private:
    OtherProgram program_;
};

}  // namespace dorix
