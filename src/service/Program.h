#pragma once

#include <memory>
#include <optional>
#include <string>

namespace dorix::service {

struct Settings;

/// The whole service, from its start to its end. One in a process; its threads are its own.
class Program {
 public:
    /// Opens the database and listens. With a secret it is the service of the one who started it (see
    /// Accounts). Throws std::exception when something cannot be used.
    Program(const Settings& settings, const std::string& localSecret);
    ~Program();

    /// Returns when it was told to end, by a signal or by the end of whoever holds the other end of `parent`,
    /// and the answers under way have ended.
    void run(std::optional<int> parent);

 private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace dorix::service
