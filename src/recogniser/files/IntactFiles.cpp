#include "recogniser/files/IntactFiles.h"

#include "base/Error.h"
#include "base/Sha256.h"
#include "base/text/Text.h"

#include <system_error>

namespace dorix::recogniser {

namespace fs = std::filesystem;

void demandIntact(const fs::path& folder, const std::map<std::string, std::string>& sha256) {
    for (const auto& [path, sum] : sha256) {
        const auto found = sha256OfFile(folder / path);
        if (!found) throw MessageError(path + ": " + found.error().message());
        if (*found != text::lowercase(sum)) throw MessageError(path + " is not the file that it should be");
    }
}

void demandFiles(const ModelRequest& model, std::initializer_list<const char*> roles) {
    for (const std::string role : roles) {
        std::error_code error;
        const auto file = model.file(role);
        if (file.empty()) throw MessageError("the model names no file for its " + role);
        if (!fs::is_regular_file(file, error)) throw MessageError(file.filename().string() + " is missing");
    }
    demandIntact(model.folder, model.sha256);
}

}  // namespace dorix::recogniser
