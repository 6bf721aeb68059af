#pragma once

#include "localdata/SettingsStore.h"
#include "settings/SettingsForm.h"
#include "views/FormWindow.h"
#include "views/settings/SettingsModel.h"

#include <QObject>
#include <QQuickItem>
#include <functional>
#include <vector>

namespace dorix {

/// The settings' window, in the middle of the screen. Main thread.
class SettingsWindow final : public FormWindow {
    Q_OBJECT

 public:
    /// All must outlive the window.
    SettingsWindow(const ViewContext& context, SettingsStore& settings, SettingsForm& form);
    ~SettingsWindow() override;

    // What the QML file asks for.
    Q_INVOKABLE void chooseSection(int index);
    Q_INVOKABLE void search(const QString& text) { form_.search(text.toStdString()); }
    Q_INVOKABLE void toggle(const QString& row, bool on) { form_.toggle(row.toStdString(), on); }
    Q_INVOKABLE void choose(const QString& row, const QString& option) {
        form_.choose(row.toStdString(), option.toStdString());
    }
    Q_INVOKABLE void edit(const QString& row, const QString& text) {
        form_.edit(row.toStdString(), text.toStdString());
    }
    Q_INVOKABLE void commit(const QString& row, const QString& text) {
        form_.commit(row.toStdString(), text.toStdString());
    }
    Q_INVOKABLE void press(const QString& row, const QString& button) {
        form_.press(row.toStdString(), button.toStdString());
    }
    /// Tells assistive technology that the user is at an item that shows the keyboard without having it.
    Q_INVOKABLE static void tellFocus(QQuickItem* item);

 protected:
    QSize cardSize() override;
    void aboutToOpen() override;
    void aboutToClose() override;
    bool event(QEvent* event) override;

 private:
    void watch(SettingsStore& settings);
    void showWords();
    void showRows();
    void tellKeyboard();
    void stepBackOrClose();

    SettingsForm& form_;
    SettingsModel rows_;
    std::vector<Subscription> subscriptions_;
};

}  // namespace dorix
