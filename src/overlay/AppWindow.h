#pragma once

namespace dorix {

/// A window of the program, as the core drives it; whoever draws it says when something is done there. Main
/// executor.
class AppWindow {
 public:
    AppWindow() = default;
    virtual ~AppWindow() = default;
    AppWindow(const AppWindow&) = delete;
    AppWindow& operator=(const AppWindow&) = delete;

    /// Takes its place, where the user left it or beside the icon; whether that is on the right of the icon.
    virtual bool place() = 0;
    /// Comes up above all others, with the keyboard if it takes that.
    virtual void show() = 0;
    /// Leaves the screen. It has begun to fade when the state said that it is closed.
    virtual void hide() = 0;
    /// Takes the keyboard again while it shows, after a dialog of the desktop's.
    virtual void takeKeyboard() = 0;
    /// The user has clicked elsewhere, and the window is about to close: what was clicked gets the keyboard.
    virtual void clickedOutside() = 0;
};

/// Where there is no display.
class NoWindow final : public AppWindow {
 public:
    bool place() override { return false; }
    void show() override {}
    void hide() override {}
    void takeKeyboard() override {}
    void clickedOutside() override {}
};

inline NoWindow noWindow;

/// The windows by what they show; never null.
struct AppWindows {
    AppWindow* icon = &noWindow;
    AppWindow* panel = &noWindow;
    AppWindow* card = &noWindow;
    AppWindow* account = &noWindow;
    AppWindow* onboarding = &noWindow;
    AppWindow* settings = &noWindow;
};

}  // namespace dorix
