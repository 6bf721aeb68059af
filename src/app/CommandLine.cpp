#include "app/CommandLine.h"

#include "base/Version.h"
#include "linux/xdg/Environment.h"
#include "localdata/Language.h"

#include <cstdio>
#include <cstdlib>
#include <string>

namespace dorix {

namespace {

constexpr int badUsage = 2;

/// On a full disk nobody should believe that it was told everything.
int print(const std::string& text) {
    const bool isWritten = std::fputs(text.c_str(), stdout) >= 0 && std::fflush(stdout) == 0;
    return isWritten ? EXIT_SUCCESS : EXIT_FAILURE;
}

int printHelp() {
    return print(
        tr("Uso: dorix [OPCIÓN]") + "\n\n" +
        tr("Mantén pulsada una tecla, habla, y lo que dices se escribe donde está el cursor.\nSin opciones "
           "DORIX se abre; si ya está abierto, muestra u oculta el historial.") +
        "\n\n  -h, --help     " + tr("muestra esta ayuda") + "\n  -V, --version  " +
        tr("muestra la versión") + "\n\n" + tr("La página de manual, «man dorix», cuenta el resto.") + "\n");
}

int refuse(std::string_view argument) {
    const auto complaint = formatText(
        tr("dorix: no se conoce la opción «%@»; «dorix --help» dice cuáles hay"), {std::string(argument)});
    std::fprintf(stderr, "%s\n", complaint.c_str());
    return badUsage;
}

int answer(std::string_view argument) {
    if (argument == "--help" || argument == "-h") return printHelp();
    if (argument == "--version" || argument == "-V") return print("dorix " + std::string(version()) + "\n");
    return refuse(argument);
}

}  // namespace

std::optional<int> answerCommandLine(std::span<const std::string_view> arguments) {
    // A session manager that opens again what was open names the session in this way.
    constexpr std::string_view session = "-session";
    auto left = arguments.subspan(arguments.empty() ? 0 : 1);
    while (left.size() >= 2 && left.front() == session) left = left.subspan(2);
    if (left.empty()) return std::nullopt;
    installLanguage(systemLanguages());
    const int status = answer(left.front());
    uninstallLanguage();
    return status;
}

}  // namespace dorix
