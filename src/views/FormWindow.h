#pragma once

#include "views/OverlayPanel.h"

#include <QSize>
#include <functional>

namespace dorix {

/// A card in the middle of the screen that the user fills in, and may move. Main thread.
class FormWindow : public OverlayPanel {
    Q_OBJECT

 public:
    /// `card` is the size that it begins with, without its shadow, in points.
    FormWindow(const ViewContext& context, QSize card);

    /// Comes up above all others, with the keyboard.
    void open();
    void dismiss();

    /// Becomes as large as it is to be, as far as the screen goes, and draws its outline anew.
    Q_SLOT void fit();

    /// Called when the user closes it.
    std::function<void()> onClosed = [] {};

    // What the QML file asks for.
    Q_INVOKABLE void closeWindow() { onClosed(); }
    Q_INVOKABLE void moveWindow() { startSystemMove(); }

 protected:
    /// Loads the file; once, when `view` has what it needs.
    void loadForm(const char* file);

    /// The card without its shadow, in points; empty as long as that is not known.
    virtual QSize cardSize() = 0;
    virtual void aboutToOpen() {}
    virtual void aboutToClose() {}

    /// How high what the file shows wants to be, in points.
    int contentHeight();
};

}  // namespace dorix
