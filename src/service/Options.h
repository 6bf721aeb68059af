#pragma once

#include <filesystem>
#include <optional>
#include <span>
#include <string>

namespace dorix::service {

/// What the program was started with.
struct Options {
    bool isHelp = false;
    bool isCheck = false;
    std::optional<std::filesystem::path> config;
    std::optional<int> secretDescriptor;
};

/// Nothing when they cannot be understood.
std::optional<Options> readOptions(std::span<char*> arguments);

/// The text for --help, with every setting.
std::string usageText();

}  // namespace dorix::service
