#pragma once

#include <expected>
#include <filesystem>
#include <optional>
#include <span>
#include <string>

namespace dorix::service {

/// What the program was started with.
struct Options {
    bool isHelp = false;
    bool isVersion = false;
    bool isCheck = false;
    std::optional<std::filesystem::path> config;
    std::optional<int> secretDescriptor;
};

/// Or what is wrong with the arguments.
std::expected<Options, std::string> readOptions(std::span<char*> arguments);

/// The text for --help, with every setting.
std::string usageText();

}  // namespace dorix::service
