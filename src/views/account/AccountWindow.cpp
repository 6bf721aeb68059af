#include "views/account/AccountWindow.h"

#include "localdata/Language.h"
#include "views/DesktopWords.h"
#include "views/Tokens.h"

#include <QQuickItem>

namespace dorix {

namespace {

using Step = AccountForm::Step;

constexpr int cardWidth = 400;

const char* stepName(Step step) {
    switch (step) {
        case Step::thisComputer:
            return "thisComputer";
        case Step::server:
            return "server";
        case Step::email:
            return "email";
        case Step::code:
            return "code";
        case Step::signedIn:
            break;
    }
    return "signedIn";
}

std::string heading(Step step) {
    switch (step) {
        case Step::thisComputer:
            return tr("DORIX funciona en este ordenador");
        case Step::server:
            return tr("Usar otro servidor");
        case Step::email:
            return tr("Crea tu cuenta o entra");
        case Step::code:
            return tr("Revisa tu email");
        case Step::signedIn:
            break;
    }
    return tr("Tu cuenta de DORIX");
}

std::string explanation(Step step, const std::string& email) {
    switch (step) {
        case Step::thisComputer:
            return tr("El servicio que escribe por ti está aquí mismo. No necesitas ninguna cuenta.");
        case Step::server:
            return tr("Tu equipo o tu empresa pueden tener un servicio de DORIX. Escribe su dirección.");
        case Step::email:
            return {};
        case Step::code:
            return formatText(tr("Hemos enviado un código de 6 cifras a %@."), {email});
        case Step::signedIn:
            break;
    }
    // Whose session it is may come after it.
    return email.empty() ? std::string() : formatText(tr("Has entrado como %@."), {email});
}

}  // namespace

AccountWindow::AccountWindow(const ViewContext& context, SettingsStore& settings, AccountForm& form)
    : FormWindow(context, {cardWidth, cardWidth}), form_(form) {
    view().insert({{"busy", form.busy.get()},
                   {"error", shown(form.error.get())},
                   {"notice", shown(form.notice.get())},
                   {"byKeyboard", true}});
    showWords();
    loadForm("Account");
    watch(settings);
    connect(rootObject(), SIGNAL(wantedHeightChanged()), this, SLOT(fit()));
}

void AccountWindow::watch(SettingsStore& settings) {
    subscriptions_.push_back(form_.step.subscribe([this](Step) { showStep(); }));
    subscriptions_.push_back(form_.email.subscribe([this](const std::string&) { showStep(); }));
    subscriptions_.push_back(form_.error.subscribe([this](const std::string& words) {
        view().insert("error", shown(words));
        if (!words.empty()) announce("complaint");
    }));
    subscriptions_.push_back(form_.notice.subscribe([this](const std::string& words) {
        view().insert("notice", shown(words));
        if (!words.empty()) announce("notice");
    }));
    subscriptions_.push_back(form_.busy.subscribe([this](bool busy) { view().insert("busy", busy); }));
    subscriptions_.push_back(
        settings.languageObserver().code.subscribe([this](const std::string&) { showWords(); }));
}

void AccountWindow::showWords() {
    QVariantMap words;
    const auto put = [&words](const char* key, const char* text) {
        words.insert(key, shown(dorix::tr(text)));
    };
    put("title", "Tu cuenta de DORIX");
    put("close", "Cerrar");
    words.insert("email", "Email");  // in every language
    put("sendCode", "Enviar código");
    put("code", "Código de 6 cifras");
    put("enter", "Entrar");
    put("changeEmail", "Cambiar email");
    put("resend", "Reenviar código");
    put("signOut", "Cerrar sesión");
    put("otherServer", "Usar otro servidor…");
    put("server", "Dirección del servidor");
    put("useServer", "Usar otro servidor");
    put("thisComputer", "Usar este ordenador");
    put("opening", "Abriendo…");
    view().insert("words", words);
    showStep();
}

void AccountWindow::showStep() {
    const auto step = form_.step.get();
    view().insert({{"step", stepName(step)},
                   {"heading", shown(heading(step))},
                   {"explanation", shown(explanation(step, form_.email.get()))},
                   {"email", QString::fromStdString(form_.email.get())},
                   {"server", QString::fromStdString(form_.server())}});
}

void AccountWindow::aboutToOpen() {
    if (!isVisible()) form_.begin();
}

QSize AccountWindow::cardSize() { return {cardWidth, contentHeight()}; }

}  // namespace dorix
