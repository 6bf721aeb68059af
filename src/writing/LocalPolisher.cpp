#include "writing/LocalPolisher.h"

#include "base/async/Timeout.h"
#include "base/text/Text.h"
#include "base/writing/Faithfulness.h"
#include "localdata/FarEngine.h"
#include "localdata/Language.h"

#include <cstddef>

namespace dorix {

namespace {

// Stricter than with the service: a small model strays sooner.
constexpr double leastFaithful = 0.5;
constexpr double temperature = 0.2;
constexpr std::size_t toldOfRejected = 80;  // characters

/// Seconds. As long as the service is given, and for the same reason: the user waits with nothing on the
/// screen, and by then a text by rule is worth more than a better one later. A model on a slow processor may
/// well take longer for a long dictation.
constexpr double patience = 20;

const GenerationSchema& redaccion() {
    static const GenerationSchema schema{
        .name = "Redaccion",
        .fields = {{"titulo",
                    "Título muy breve (máximo 6 palabras) que describe el contenido, en el idioma del texto"},
                   {"texto", "El texto final, listo para escribirse en el campo activo"}}};
    return schema;
}

/// The marks tell what was dictated from what the model is to do.
std::string promptFor(const std::string& transcript) {
    return "Transcripción del dictado:\n<dictado>\n" + transcript + "\n</dictado>";
}

}  // namespace

std::string LocalError::localizedDescription() const {
    if (!rejected_) return tr("El modelo local no ha respondido a tiempo.");
    return formatText(tr("El modelo local se alejó de lo dictado: «%@»"),
                      {std::string(text::prefix(*rejected_, toldOfRejected))});
}

void LocalPolisher::prewarm(const PolishRequest& request) {
    if (!isAvailable()) return;
    sessionInstructions_ = rewriteInstructions(request);
    session_ = model_.makeSession(sessionInstructions_);
    session_->prewarm();
}

/// One that is ready and fits, or else a new one. It serves for one utterance only, so that none sees the
/// text of another.
std::unique_ptr<LanguageModelSession> LocalPolisher::takeSession(const std::string& instructions) {
    auto ready = std::move(session_);
    if (ready && sessionInstructions_ == instructions && !ready->isResponding()) return ready;
    return model_.makeSession(instructions);
}

Task<PolishResult> LocalPolisher::polish(PolishRequest request) {
    const auto host = model_.farHost();
    auto engine = host ? farEngine(*host) : name_;
    const auto session = takeSession(rewriteInstructions(request));
    auto written = co_await withTimeout(
        session->respond(promptFor(request.transcript), redaccion(), {.temperature = temperature}), patience);
    if (!written) throw LocalError::late();
    std::string text = typeable(written->at("texto"));
    if (text.empty() || faithfulnessScore(text, request.transcript) < leastFaithful)
        throw LocalError::unfaithful(std::move(text));
    std::string title = typeable(written->at("titulo"));
    if (title.empty()) title = titleFrom(text);
    co_return PolishResult{.title = std::move(title), .text = std::move(text), .engine = std::move(engine)};
}

std::optional<std::string> unavailableReason(SystemLanguageModel::Availability availability) {
    using enum SystemLanguageModel::Availability;
    switch (availability) {
        case available:
            return std::nullopt;
        case deviceNotEligible:
            return tr("Este Mac no es compatible con Apple Intelligence.");
        case appleIntelligenceNotEnabled:
            return tr("Activa Apple Intelligence en Ajustes del Sistema.");
        case modelNotReady:
            return tr("El modelo de Apple Intelligence se está descargando.");
        case otherwise:
            break;
    }
    return tr("Apple Intelligence no está disponible.");
}

}  // namespace dorix
