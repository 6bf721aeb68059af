#include "service/ai/Extraction.h"

namespace dorix::service {

std::expected<std::string, Needed> answerByExtraction(const AskRequest& request, Language) {
    using enum Needed::Reason;
    return std::unexpected(Needed{request.screenshot ? picture : noMaterial});
}

}  // namespace dorix::service
