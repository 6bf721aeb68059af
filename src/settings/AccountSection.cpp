#include "settings/AccountSection.h"

#include "localdata/Language.h"

#include <utility>

namespace dorix {

using namespace settingsrow;

AccountSection::AccountSection(const AccountStore& account, const OwnService& own,
                               std::function<void()> showAccount)
    : account_(account), own_(own), showAccount_(std::move(showAccount)) {
    follow(account.loggedIn, account.profile, own.hasBadSettings);
}

std::string AccountSection::title() const { return tr("Cuenta"); }

SettingsRows AccountSection::rows() {
    auto row = item("account.session", tr("Tu cuenta de DORIX"), "");
    const auto& profile = account_.profile.get();
    if (own_.isResponsible()) {
        row.label = tr("DORIX funciona en este ordenador");
        row.description = tr("El servicio que escribe por ti está aquí mismo. No necesitas ninguna cuenta.");
        if (own_.hasBadSettings.get()) {
            row.tone = SettingsRow::Tone::wrong;
            row.status =
                tr("El servicio de este ordenador no puede empezar: en su configuración (variables "
                   "DORIX_SERVICE_…) hay un error. El registro de DORIX dice cuál.");
        }
    } else if (account_.loggedIn.get()) {
        row.tone = SettingsRow::Tone::good;
        if (profile) row.status = formatText(tr("Has entrado como %@."), {profile->email});
    } else {
        row.tone = SettingsRow::Tone::warning;
        row.status = tr("Entra en tu cuenta de DORIX para seguir.");
    }
    row.buttons = {{.id = "account", .label = tr("Tu cuenta…")}};
    row.actions.press = [this](const std::string&) { showAccount_(); };
    return {heading("account.heading", tr("Cuenta")), row};
}

}  // namespace dorix
