#pragma once

#include "base/async/Executor.h"
#include "base/async/Task.h"
#include "download/RemoteFile.h"
#include "platform/HttpClient.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>

namespace dorix {

/// Gets files of a known size and checksum from the web: what is there from an earlier time is gone on with,
/// a connection that breaks is tried again, and what is not the file is refused. A crash leaves a part that
/// the next fetch goes on with. The executor's thread of whoever awaits; nothing blocks it.
class FileFetch {
 public:
    /// With a network that comes and goes.
    struct Patience {
        double stall = 60;  // seconds without a byte
        int attempts = 4;   // that bring nothing, one after the other
        double pause = 2;   // seconds after the first of them; doubles each time
    };
    /// How much of the file is there, in bytes.
    using Progress = std::function<void(std::uint64_t held)>;

    /// Both outlive it. `disk` runs what blocks on the disk.
    FileFetch(Executor& disk, HttpClient& http, Patience patience)
        : disk_(disk), http_(http), patience_(patience) {}

    /// Makes `to` that file; its folder is there. Throws InstallError. Of a file that turned out to be
    /// another nothing is left, otherwise what had come.
    Task<void> fetch(RemoteFile file, std::filesystem::path to, Progress progress) const;

 private:
    struct Part;

    Task<std::shared_ptr<Part>> look(const RemoteFile& file, const std::filesystem::path& to) const;
    Task<std::shared_ptr<Part>> complete(RemoteFile file, std::filesystem::path to, Progress progress) const;
    Task<void> transfer(RemoteFile file, std::filesystem::path to, std::shared_ptr<Part> part,
                        Progress progress) const;
    Task<bool> isAsSeen(const std::filesystem::path& to, std::uint64_t held) const;
    Task<void> discard(const std::filesystem::path& to) const;

    Executor& disk_;
    HttpClient& http_;
    const Patience patience_;
};

}  // namespace dorix
