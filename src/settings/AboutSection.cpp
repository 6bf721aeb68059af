#include "settings/AboutSection.h"

#include "base/Version.h"
#include "localdata/Language.h"
#include "settings/UsedSoftware.h"

#include <string>
#include <utility>

namespace dorix {

using namespace settingsrow;

std::string AboutSection::title() const { return tr("Acerca de"); }

SettingsRows AboutSection::rows() {
    SettingsRows rows;
    rows.push_back(heading("about.heading", "DORIX"));
    rows.push_back(item("about.version", formatText(tr("Versión %@"), {std::string(version())}),
                        formatText(tr("Licencia: %@"), {"MIT"})));
    rows.push_back(heading("about.software", tr("Hecho con")));
    for (const auto& used : usedSoftware()) {
        rows.push_back(item("about.software." + std::string(used.name), std::string(used.name),
                            formatText(tr("Licencia: %@"), {std::string(used.licence)})));
    }
    return rows;
}

}  // namespace dorix
