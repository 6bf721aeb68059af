#include "shell/IconMenu.h"

#include "localdata/Language.h"

namespace dorix {

Menu iconMenu(bool panelOpen, bool paused, const IconVerbs& verbs) {
    return {
        {tr(panelOpen ? "Cerrar historial" : "Abrir historial"), verbs.togglePanel},
        ClosureMenuItem::separator(),
        {tr("Tu cuenta…"), verbs.showAccount},
        {tr("Ajustes…"), verbs.showSettings},
        ClosureMenuItem::separator(),
        {tr(paused ? "Reanudar DORIX" : "Pausar DORIX"),
         [setPaused = verbs.setPaused, paused] { setPaused(!paused); }},
        ClosureMenuItem::separator(),
        {tr("Reiniciar DORIX"), verbs.relaunch},
        {tr("Salir de DORIX"), verbs.terminate},
    };
}

}  // namespace dorix
