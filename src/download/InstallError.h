#pragma once

#include "base/Error.h"
#include "platform/HttpClient.h"

#include <cstdint>
#include <string>
#include <system_error>
#include <utility>

namespace dorix {

/// Why a model could not be installed or removed.
class InstallError : public Error {
 public:
    enum class Case {
        unknownModel,
        licenceNotAccepted,
        tooLittleSpace,
        unreachable,    // the network or the server, while it lasts
        notGiven,       // the server answers, with something else
        wrongContents,  // what came is not the model; it is gone again
        notUnpacked,
        notStored,
        underWayElsewhere,
        notOurs,
    };

    explicit InstallError(Case kind, std::string detail = {}) : kind_(kind), detail_(std::move(detail)) {}

    static InstallError tooLittleSpace(std::uint64_t needed, std::uint64_t free);
    static InstallError of(const HttpError& error);
    static InstallError of(const std::error_code& error) {
        return InstallError(Case::notStored, error.message());
    }

    Case kind() const { return kind_; }
    std::string localizedDescription() const override;
    const char* what() const noexcept override { return "InstallError"; }

 private:
    Case kind_;
    std::string detail_;  // in the app's language, or the system's words
};

/// "155 MB", "1,4 GB", as the app's language writes it.
std::string sizeText(std::uint64_t bytes);

}  // namespace dorix
