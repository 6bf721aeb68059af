#include "service/Options.h"

#include "service/settings/Settings.h"

#include <charconv>
#include <string_view>
#include <system_error>

namespace dorix::service {

namespace {

constexpr std::string_view usage =
    R"(dorix-service                      answers DORIX on the address from its settings, until SIGTERM or SIGINT
dorix-service --check              says what is wrong with the settings, and whether anything is
dorix-service --help               this
dorix-service --version            its version

  --config FILE                    further settings, a NAME=value a line; the environment comes first
  --local-secret-fd NUMBER         for the program that starts it for one user: a line with a secret is read from this
                                   inherited descriptor, which is good as the code of local@dorix.localhost. Then only
                                   programs of this computer are answered, and the service ends when the other end of
                                   the descriptor is closed.

Settings, in the environment or the file:

)";

std::optional<int> readDescriptor(std::string_view text) {
    int descriptor = -1;
    const auto* end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, descriptor);
    if (read.ec != std::errc() || read.ptr != end || descriptor < 0) return std::nullopt;
    return descriptor;
}

}  // namespace

std::expected<Options, std::string> readOptions(std::span<char*> arguments) {
    Options options;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string_view argument = arguments[i];
        const bool hasValue = i + 1 < arguments.size();
        if (argument == "--help" || argument == "-h") {
            options.isHelp = true;
        } else if (argument == "--version" || argument == "-V") {
            options.isVersion = true;
        } else if (argument == "--check") {
            options.isCheck = true;
        } else if (argument == "--config" && hasValue) {
            options.config = arguments[++i];
        } else if (argument == "--local-secret-fd" && hasValue) {
            options.secretDescriptor = readDescriptor(arguments[++i]);
            if (!options.secretDescriptor) return std::unexpected("--local-secret-fd takes a number");
        } else if (argument == "--config" || argument == "--local-secret-fd") {
            return std::unexpected(std::string(argument) + " takes a value");
        } else {
            return std::unexpected("there is no option \"" + std::string(argument) + "\"");
        }
    }
    return options;
}

std::string usageText() { return std::string(usage) + settingsHelp(); }

}  // namespace dorix::service
