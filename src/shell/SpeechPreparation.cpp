#include "shell/SpeechPreparation.h"

#include "base/Error.h"
#include "base/Log.h"
#include "dictation/DictationController.h"
#include "localdata/Language.h"
#include "localdata/SettingsStore.h"
#include "speech/SpeechEngine.h"
#include "speech/recogniser/SpeechServer.h"

namespace dorix {

namespace {

void logFailure(const Error& error) {
    logLine("no se pudo preparar el modelo de voz: " + describedIn(LogLanguage::spanish, error));
}

}  // namespace

Task<void> SpeechPreparation::prepareQuietly() {
    try {
        co_await engine_.prepare(settings_.language.get());
    } catch (const Error& error) {
        logFailure(error);
    }
}

Task<void> SpeechPreparation::prepare() {
    if (const auto server = server_.notice()) {
        const auto notice = formatText(tr("Lo que dictes se enviará a %@ para transcribirlo."), {*server});
        dictation_.flash(HUDPhase::info(notice), 6.0);
        server_.noticeShown();
    }
    if (!settings_.speechServer.get().empty()) co_await server_.readKey();
    try {
        co_await engine_.prepare(settings_.language.get());
    } catch (const Error& error) {
        logFailure(error);
        dictation_.flash(HUDPhase::error(error.localizedDescription()), 4.0);
    }
}

}  // namespace dorix
