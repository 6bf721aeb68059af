#pragma once

#include "base/Json.h"
#include "fakes/MemoryUserDefaults.h"
#include "localdata/Language.h"

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace dorix::lab {

/// A line that does not say what its command needs.
class BadInput : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

struct Command {
    std::string_view name;
    std::string_view input;   // for the help
    std::string_view output;  // for the help
    /// Throws BadInput or a Json exception.
    std::function<Json(const Json& input)> run;
};

/// The commands by subsystem.
std::vector<Command> assistantCommands();
std::vector<Command> cloudCommands();
std::vector<Command> writingCommands();
std::vector<Command> languageCommands();
std::vector<Command> contextCommands();
std::vector<Command> dictationCommands();
std::vector<Command> memoryCommands();
std::vector<Command> readingCommands();
std::vector<Command> recallCommands();
std::vector<Command> routingCommands();
std::vector<Command> routeCommands();
std::vector<Command> speechCommands();
std::vector<Command> writeCommands();

/// The field, which must be there and be a string.
std::string requiredString(const Json& input, const char* field);
/// Nothing when the field is absent or null; otherwise it must be a string.
std::optional<std::string> optionalString(const Json& input, const char* field);
/// Nothing when the field is absent or null; otherwise it must be true or false.
std::optional<bool> optionalBoolean(const Json& input, const char* field);
/// Null when the field is absent or null; otherwise it must be an object.
Json optionalObject(const Json& input, const char* field);
/// Whether the field, one of two names and the first when it is absent, is the second.
bool isSecond(const Json& input, const char* field, const std::array<std::string, 2>& names);
/// The field, which must be there and be a number.
double requiredNumber(const Json& input, const char* field);
/// The field, which must be there and be a whole number.
std::int64_t requiredInteger(const Json& input, const char* field);

/// What the base64 text in the field stands for.
std::string bytesOf(const char* field, std::string_view base64);

/// Makes the app speak a language, "es" or "en", as long as it lives.
class AppLanguage {
 public:
    explicit AppLanguage(const std::string& code);
    ~AppLanguage() { uninstallLanguage(); }
    AppLanguage(const AppLanguage&) = delete;
    AppLanguage& operator=(const AppLanguage&) = delete;

 private:
    MemoryUserDefaults defaults_;
};

/// The language that the input names in "language", Spanish if it names none.
std::string languageOf(const Json& input);

}  // namespace dorix::lab
