#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace dorix {

/// Speaks sentences with a synthetic voice, as mono sound at 16 kHz.
class Speaker {
 public:
    Speaker();
    ~Speaker();

    /// Empty when the synthesiser is missing. `text` holds letters and blanks only.
    std::vector<float> say(const std::string& text) const;

 private:
    std::filesystem::path folder_;
};

}  // namespace dorix
