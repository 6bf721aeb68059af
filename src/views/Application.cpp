#include "views/Application.h"

#include "views/Theme.h"
#include "views/Tokens.h"

#include <QFont>
#include <QGuiApplication>
#include <QQuickWindow>
#include <QStyleHints>

// Made by the build.
void qml_register_types_Dorix_Views();

/// The linker leaves out of a static library what nothing names. Outside the namespace, as the macro wants
/// it.
static void registerQml() {
    qml_register_types_Dorix_Views();
    Q_INIT_RESOURCE(qmlcache_dorix_views);
}

namespace dorix {

namespace {

/// Sets a variable of the environment as long as it lives, unless the user has set it: what this program
/// tells its toolkit is not for the programs that it starts.
class EnvironmentDefault {
 public:
    EnvironmentDefault(const char* name, const char* value)
        : name_(name), isOurs_(!qEnvironmentVariableIsSet(name)) {
        if (isOurs_) qputenv(name, value);
    }
    ~EnvironmentDefault() {
        if (isOurs_) qunsetenv(name_);
    }
    EnvironmentDefault(const EnvironmentDefault&) = delete;
    EnvironmentDefault& operator=(const EnvironmentDefault&) = delete;

 private:
    const char* name_;
    bool isOurs_;
};

void setFont() {
    QFont font(textFont);
    font.setPixelSize(tokens::fontBody);
    // Colour fringes belong to opaque windows that lie still.
    font.setStyleStrategy(QFont::NoSubpixelAntialias);
    QGuiApplication::setFont(font);
}

}  // namespace

std::unique_ptr<QCoreApplication> makeApplication(int& argc, char** argv, bool hasDisplay) {
    if (!hasDisplay) return std::make_unique<QCoreApplication>(argc, argv);
    // Places, grabs and shapes need X, also in a session that has something newer beside it.
    const EnvironmentDefault platform("QT_QPA_PLATFORM", "xcb");
    // A desktop's theme plugin would drag its whole toolkit in, for colours that the views do not use.
    const EnvironmentDefault theme("QT_QPA_PLATFORMTHEME", "generic");
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    QQuickWindow::setDefaultAlphaBuffer(true);
    auto application = std::make_unique<QGuiApplication>(argc, argv);
    QGuiApplication::setQuitOnLastWindowClosed(false);
    QGuiApplication::setDesktopFileName("es.pelmora.dorix");
    // A cursor that blinks draws a frame for nothing, twice a second.
    QGuiApplication::styleHints()->setCursorFlashTime(0);
    setFont();
    registerQml();
    return application;
}

bool canDraw() { return qobject_cast<QGuiApplication*>(QCoreApplication::instance()) != nullptr; }

}  // namespace dorix
