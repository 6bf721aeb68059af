#pragma once

#include "base/async/Timer.h"
#include "linux/dbus/BusService.h"
#include "platform/SessionState.h"

#include <list>
#include <string>
#include <vector>

namespace dorix {

/// What login manager and screen savers say of the session; as soon as one of them says that it is locked, it
/// is. Nobody is started for it. Main executor; nothing blocks.
class DBusSessionState final : public SessionState {
 public:
    /// Both must outlive it.
    DBusSessionState(Executor& main, BusConnection& system, BusConnection& session);

 private:
    /// One of the names under which screen savers are known. Several may be the same program.
    struct ScreenSaver {
        ScreenSaver(DBusSessionState& state, const std::string& name);

        void ownerChanged();
        void take(sd_bus_message* message);

        DBusSessionState& state;
        const std::string name;
        bool isActive = false;
        std::vector<Subscription> answers;
        BusService service;
        Subscription changes;
    };

    void loginManagerChanged();
    void findSession();
    void follow(const std::string& path);
    void readHint();
    void lockAsked();
    void update();

    BusConnection& system_;
    BusConnection& session_;
    bool hint_ = false;   // what the session's locker told the login manager
    bool asked_ = false;  // somebody asked for a lock, and no locker has told us of itself yet
    Timer asking_;
    int searches_ = 0;  // the ways of finding the session that have been tried
    std::string path_;  // of the session
    BusService loginManager_;
    Subscription answer_;
    std::vector<Subscription> signals_;
    std::list<ScreenSaver> screenSavers_;
};

}  // namespace dorix
