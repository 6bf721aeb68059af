#pragma once

#include "platform/Platform.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

/// What the environment variables of the session say.
namespace dorix {

/// The user's own folder.
std::filesystem::path homeFolder();

/// The user's folders by the XDG base directory rules, from the environment. A variable that
/// is unset or relative gives its default.
std::filesystem::path xdgConfigHome();
std::filesystem::path xdgDataHome();

/// Where the session's sockets lie; the folder of caches where the session has none of its own.
std::filesystem::path xdgRuntimeFolder();

/// The user's data folder and those of the system, the most important first. Relative ones are left out.
std::vector<std::filesystem::path> xdgDataFolders();

/// Where the user keeps what they write: documents, the desktop and downloads, in this order, by the
/// desktop's file of user folders, or else where these lie by custom. One that the file says is the home
/// folder itself is not used by this user, and left out.
std::vector<std::filesystem::path> xdgDocumentFolders();

/// Where the user keeps documents: what the desktop's file of user folders says, or else the home folder.
std::filesystem::path xdgDocuments();

/// The system's configuration folders, the most important first. Relative ones are left out.
std::vector<std::filesystem::path> xdgConfigFolders();

/// The key "DORIXServerURL" of the "dorix/defaults.json" in the most important of the system's configuration
/// folders that has one; none where it is missing or no string.
std::optional<std::string> packagedServer();

/// Where the models of the recogniser's own package lie: DORIX_POCKETSPHINX_MODELS, or else where that puts
/// them.
std::filesystem::path packagedSpeechModels();

/// What the user calls this computer, or else its host name.
std::string computerName();

/// The memory of the computer, in bytes; 0 where the system does not say.
std::uint64_t computerMemory();

/// Whether the desktop is one where X11 reaches only the windows of programs that use it.
bool isWaylandSession();

/// The languages that the locale variables name (LANGUAGE, LC_ALL, LC_MESSAGES, LANG, as gettext reads them).
/// The C locale, and none at all, is American English. `variable` gives a variable's value, nothing when it
/// is unset or empty.
SystemLanguages systemLanguages(const std::function<std::optional<std::string>(const char*)>& variable);

/// The same from the process environment.
SystemLanguages systemLanguages();

}  // namespace dorix
