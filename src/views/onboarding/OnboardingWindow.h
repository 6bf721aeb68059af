#pragma once

#include "localdata/SettingsStore.h"
#include "onboarding/Onboarding.h"
#include "views/FormWindow.h"

#include <QObject>

namespace dorix {

/// The window of the first run, in the middle of the screen. Main thread.
class OnboardingWindow final : public FormWindow {
    Q_OBJECT

 public:
    /// All must outlive the window.
    OnboardingWindow(const ViewContext& context, SettingsStore& settings, Onboarding& onboarding);

    // What the QML file asks for.
    Q_INVOKABLE void next() { onboarding_.next(); }
    Q_INVOKABLE void back() { onboarding_.back(); }
    Q_INVOKABLE void chooseAppLanguage(const QString& code) {
        onboarding_.chooseAppLanguage(code.toStdString());
    }
    Q_INVOKABLE void chooseLanguage(const QString& id) { onboarding_.chooseLanguage(id.toStdString()); }
    Q_INVOKABLE void chooseHoldKey(const QString& name) { onboarding_.chooseHoldKey(name.toStdString()); }
    Q_INVOKABLE void press(const QString& row, const QString& button) {
        onboarding_.press(row.toStdString(), button.toStdString());
    }
    Q_INVOKABLE void setFieldFocused(bool focused) { onboarding_.setFieldFocused(focused); }
    Q_INVOKABLE void fieldChanged(const QString& text) { onboarding_.fieldChanged(text.toStdString()); }

 protected:
    QSize cardSize() override;

 private:
    void watch(SettingsStore& settings);
    void showWords();
    void showContents();
    void showRows();

    Onboarding& onboarding_;
    std::vector<Subscription> subscriptions_;
};

}  // namespace dorix
