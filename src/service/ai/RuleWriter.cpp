#include "service/ai/RuleWriter.h"

#include "base/text/Text.h"

namespace dorix::service {

WriteAnswer writeByRules(const WriteRequest& request) {
    return {.texto = text::capitalizeFirst(text::trim(request.transcript))};
}

}  // namespace dorix::service
