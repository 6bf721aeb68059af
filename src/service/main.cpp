#include "base/Log.h"
#include "base/Version.h"
#include "service/LocalSecret.h"
#include "service/Options.h"
#include "service/Program.h"
#include "service/model/ModelUrl.h"
#include "service/settings/Settings.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace {

using namespace dorix;
using namespace dorix::service;

constexpr int badUsage = 2;
constexpr int badSettings = 3;

std::optional<std::string> fromEnvironment(const std::string& name) {
    const char* value = std::getenv(name.c_str());
    return value == nullptr ? std::nullopt : std::optional<std::string>(value);
}

std::vector<std::string> faultsOf(const Settings& settings) {
    auto faults = faultsOnThisMachine(settings);
    if (!settings.modelUrl.empty() && !parseModelUrl(settings.modelUrl)) {
        faults.emplace_back("DORIX_SERVICE_MODEL_URL: must be http://HOST:PORT/PATH, or https://");
    }
    return faults;
}

int tell(const std::vector<std::string>& faults) {
    for (const auto& fault : faults) std::fprintf(stderr, "%s\n", fault.c_str());
    return badSettings;
}

int refuse(const std::string& fault) {
    std::fprintf(stderr, "dorix-service: %s; dorix-service --help tells what there is\n", fault.c_str());
    return badUsage;
}

int print(const std::string& text) {
    const bool isWritten = std::fputs(text.c_str(), stdout) >= 0 && std::fflush(stdout) == 0;
    return isWritten ? EXIT_SUCCESS : EXIT_FAILURE;
}

int runService(const Settings& settings, const Options& options) {
    std::string secret;
    if (options.secretDescriptor) {
        if (!settings.listen.isLoopback)
            return tell({"--local-secret-fd: DORIX_SERVICE_LISTEN must be this computer"});
        secret = readLocalSecret(*options.secretDescriptor);
    }
    Program program(settings, secret);
    program.run(options.secretDescriptor);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    const auto options = readOptions(std::span(argv + 1, static_cast<std::size_t>(argc - 1)));
    if (!options) return refuse(options.error());
    if (options->isHelp) return print(usageText());
    if (options->isVersion) return print("dorix-service " + std::string(version()) + "\n");
    setLogName("dorix-service");
    // A client that is gone, and a log that nobody reads any more.
    std::signal(SIGPIPE, SIG_IGN);
    const auto settings = readSettings(fromEnvironment, options->config);
    if (!settings) return tell(settings.error());
    if (const auto faults = faultsOf(*settings); !faults.empty()) return tell(faults);
    if (options->isCheck) {
        std::puts("nothing is wrong with the settings");
        return 0;
    }
    try {
        return runService(*settings, *options);
    } catch (const std::exception& error) {
        logLine(std::string("event=failed what=") + error.what());
        return EXIT_FAILURE;
    }
}
