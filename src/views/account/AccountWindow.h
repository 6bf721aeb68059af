#pragma once

#include "cloud/AccountForm.h"
#include "localdata/SettingsStore.h"
#include "views/FormWindow.h"

#include <QObject>

namespace dorix {

/// The account's window, in the middle of the screen. Main thread.
class AccountWindow final : public FormWindow {
    Q_OBJECT

 public:
    /// All must outlive the window.
    AccountWindow(const ViewContext& context, SettingsStore& settings, AccountForm& form);

    // What the QML file asks for.
    Q_INVOKABLE void sendCode(const QString& email) { form_.sendCode(email.toStdString()); }
    Q_INVOKABLE void resendCode() { form_.resendCode(); }
    Q_INVOKABLE void verify(const QString& code) { form_.verify(code.toStdString()); }
    Q_INVOKABLE void changeEmail() { form_.changeEmail(); }
    Q_INVOKABLE void signOut() { form_.signOut(); }
    Q_INVOKABLE void chooseServer() { form_.chooseServer(); }
    Q_INVOKABLE void useServer(const QString& address) { form_.useServer(address.toStdString()); }
    Q_INVOKABLE void useThisComputer() { form_.useThisComputer(); }
    Q_INVOKABLE void back() { form_.begin(); }

 protected:
    void aboutToOpen() override;
    QSize cardSize() override;

 private:
    void watch(SettingsStore& settings);
    void showWords();
    void showStep();

    AccountForm& form_;
    std::vector<Subscription> subscriptions_;
};

}  // namespace dorix
