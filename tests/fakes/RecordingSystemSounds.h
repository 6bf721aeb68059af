#pragma once

#include "platform/SystemSounds.h"

#include <string>
#include <vector>

namespace dorix {

class RecordingSystemSounds final : public SystemSounds {
 public:
    void play(std::string_view name, double volume) override {
        played.push_back(std::string(name) + " " + std::to_string(volume).substr(0, 4));
    }

    std::vector<std::string> played;
};

}  // namespace dorix
