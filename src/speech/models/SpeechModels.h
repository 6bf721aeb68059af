#pragma once

#include "base/Observable.h"
#include "speech/models/SpeechModel.h"

#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace dorix {

/// The models that the user prefers, by language ("es"): their ids.
using SpeechModelChoices = std::map<std::string, std::string>;

/// "es" of "es-MX", by which choices are kept.
std::string languageCode(std::string_view languageId);

/// The models that are on this computer, and which of them recognises what. It looks anew each time that it
/// is asked, so that a folder put there by hand counts at once: some milliseconds on the disk. Any thread but
/// for what reads the choices, which belong to the main executor.
class SpeechModels {
 public:
    /// `folder` has a folder for each installed model; `packaged` has the English model of the system's
    /// package, or nothing. The choices outlive this.
    SpeechModels(std::filesystem::path folder, std::filesystem::path packaged,
                 const Observable<SpeechModelChoices>& choices);

    /// Those that are in order, the better ones first, that of the package last. What is wrong with another
    /// folder is told in the log, once.
    std::vector<SpeechModel> installed() const;

    /// What recognises a language ("es-MX"), of what can be used: the user's choice if it is installed, or
    /// else the best.
    std::optional<SpeechModel> choose(std::string_view languageId) const;

    /// What is asked of a model before it is chosen, besides being in order.
    using Usable = std::function<bool(const SpeechModel&)>;
    Usable isUsable = [](const SpeechModel&) { return true; };

    /// The model in that folder is not what its record says: it is not chosen until it is trusted again.
    void setAside(const std::filesystem::path& folder) { setAside_.insert(folder); }
    void trust(const std::filesystem::path& folder) { setAside_.erase(folder); }
    bool isSetAside(const std::filesystem::path& folder) const { return setAside_.contains(folder); }

    /// The one of that name; none when it is not in order.
    std::optional<SpeechModel> find(std::string_view id) const;

    const std::filesystem::path& folder() const { return folder_; }

 private:
    void tell(const std::filesystem::path& folder, const std::string& complaint) const;

    const std::filesystem::path folder_;
    const std::filesystem::path packaged_;
    const Observable<SpeechModelChoices>& choices_;
    std::set<std::filesystem::path> setAside_;
    mutable std::map<std::filesystem::path, std::string> told_;  // what was said of which folder
};

}  // namespace dorix
