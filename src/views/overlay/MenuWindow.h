#pragma once

#include "platform/StatusItem.h"
#include "views/OverlayPanel.h"

#include <functional>
#include <vector>

namespace dorix {

/// The icon's menu, drawn by the program itself. It closes when a row was chosen, with Esc and with a click
/// elsewhere. Main thread.
class MenuWindow final : public OverlayPanel {
    Q_OBJECT

 public:
    MenuWindow(const ViewContext& context, Menu items);

    /// Called once it has closed. It may let go of the window with deleteLater, not at once.
    std::function<void()> onClosed = [] {};

    /// Opens at the point, or beside it where the screen ends, and takes keyboard and pointer.
    void popUp(QPoint where);
    void close();

    int currentRow() const { return current_; }

    /// Chooses the row, if it can be chosen.
    Q_SLOT void activate(int row);

 protected:
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

 private:
    struct Row {
        int top = 0;
        int height = 0;
    };

    void layOut();
    void grab(bool on);
    bool canChoose(int row) const;
    int rowAt(QPointF position) const;
    void setCurrent(int row, bool byKeyboard);
    void step(int direction);
    void choosePrefix(const QString& typed);

    Menu items_;
    std::vector<Row> rows_;
    int current_ = -1;
    bool armed_ = false;  // the release that follows is of a press meant for the menu
    bool closed_ = false;
    QPointF openedAt_;
};

}  // namespace dorix
