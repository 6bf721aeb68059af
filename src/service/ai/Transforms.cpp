#include "service/ai/Transforms.h"

namespace dorix::service {

std::expected<std::string, Needed> transformByRules(const TransformRequest&) {
    return std::unexpected(Needed{Needed::Reason::rewriting});
}

}  // namespace dorix::service
