#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace dorix {

/// The user's files as the system lists them. Any thread; what goes wrong is not told. Blocks on the disk,
/// and for as long as a network that does not answer likes: who waits for `list` or `changed` may be left
/// behind in it when the object goes, so these use nothing of the object after they have waited.
class FileTree {
 public:
    enum class Kind { file, folder, other };  // links are `other`

    using Visitor = std::function<void(std::string_view name, Kind kind)>;

    virtual ~FileTree() = default;

    /// Tells of what is in a folder, without "." and "..", in no order; nothing of one that cannot be read.
    /// Gives what `changed` does, as it was before that.
    virtual double list(const std::string& folder, const Visitor& visit) = 0;

    /// When something came into a folder, went, or was renamed there last, in seconds since 1970. Not always
    /// finer than two seconds. 0 where the folder cannot be read.
    virtual double changed(const std::string& folder) = 0;

    /// Where file systems are mounted that lie on another computer. Touches none of them.
    virtual std::vector<std::string> networkMounts() = 0;
};

/// Where there are no files.
class UnavailableFileTree final : public FileTree {
 public:
    double list(const std::string&, const Visitor&) override { return 0; }
    double changed(const std::string&) override { return 0; }
    std::vector<std::string> networkMounts() override { return {}; }
};

}  // namespace dorix
