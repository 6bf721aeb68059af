#include "settings/SpeechSection.h"

#include "localdata/Language.h"

namespace dorix {

SpeechSection::SpeechSection(const Parts& parts, MicrophoneTest& test)
    : hasSystemRecogniser_(parts.hasSystemRecogniser),
      test_(test),
      microphone_(parts.settings, parts.audio, test, [this] { onChanged(); }),
      models_(parts.settings, parts.models, parts.installer, parts.installs, [this] { onChanged(); }),
      server_(parts.executor, parts.settings, parts.server, [this] { onChanged(); }) {}

std::string SpeechSection::title() const { return tr("Voz"); }

SettingsRows SpeechSection::rows() {
    SettingsRows rows;
    microphone_.addTo(rows);
    if (hasSystemRecogniser_) return rows;
    models_.addTo(rows);
    server_.addTo(rows);
    return rows;
}

void SpeechSection::shown() {
    models_.lookAnew();
    if (!hasSystemRecogniser_) server_.lookAnew();
}

void SpeechSection::hidden() {
    models_.stepBack();
    test_.forget();
}

bool SpeechSection::stepBack() {
    if (!models_.stepBack()) return false;
    onChanged();
    return true;
}

}  // namespace dorix
