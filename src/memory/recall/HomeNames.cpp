#include "memory/recall/HomeNames.h"

#include <algorithm>
#include <mutex>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace dorix {

namespace {

constexpr std::size_t mostResults = 400;
constexpr double fresh = 10;       // seconds
constexpr double keptFor = 600;    // seconds after the last question
constexpr double patience = 3;     // seconds, of a question
constexpr double hangsAfter = 20;  // seconds
/// What changes within the same moment of a file system's clock as it is listed is not told by that clock.
constexpr double doubtful = 3;  // seconds

}  // namespace

/// One way through all the folders, on a thread of its own; what it has so far can be searched meanwhile.
class HomeNames::Walk {
 public:
    /// `before` is one that came to its end, or null: what has not changed since is taken from that.
    Walk(const std::string& home, std::shared_ptr<const Walk> before)
        : names_(home), before_(std::move(before)) {}

    double began = 0;  // by the executor's clock
    Completion<void> ended;

    /// The walk itself, on its thread; `now` is the date at its beginning.
    void run(double now, FileTree& tree, const std::vector<std::string>& leftOut,
             const LooseThreads::Watch& watch);

    /// Any thread.
    std::vector<std::string> find(const std::vector<std::string>& tokens, NameIndex::Match match) const {
        const std::scoped_lock lock(mutex_);
        return names_.find(tokens, match, mostResults);
    }

 private:
    struct Step {
        NameIndex::Folder folder;
        std::optional<NameIndex::Folder> before;  // what it was then
        std::string path;
    };

    bool isUnchanged(FileTree& tree, const Step& step) const {
        const auto then = step.before ? before_->names_.changed(*step.before) : 0;
        return then != 0 && tree.changed(step.path) == then;
    }
    void copy(const Step& step);
    void list(const Step& step, double now, FileTree& tree, const LooseThreads::Watch& watch);
    void goInto(NameIndex::Folder folder, std::optional<NameIndex::Folder> before) {
        steps_.push_back({.folder = folder, .before = before, .path = names_.pathOf(folder)});
    }

    mutable std::mutex mutex_;
    NameIndex names_;  // guarded by mutex_ while it runs; its own thread reads it without
    std::shared_ptr<const Walk> before_;
    std::vector<Step> steps_;
};

void HomeNames::Walk::run(double now, FileTree& tree, const std::vector<std::string>& leftOut,
                          const LooseThreads::Watch& watch) {
    const auto isBefore = before_ ? std::optional(NameIndex::rootFolder) : std::nullopt;
    // The home folder itself may be a link.
    steps_.push_back({NameIndex::rootFolder, isBefore, names_.pathOf(NameIndex::rootFolder) + "/."});
    while (!steps_.empty() && watch.goesOn() && !names_.isFull()) {
        const auto step = std::move(steps_.back());
        steps_.pop_back();
        if (std::ranges::find(leftOut, step.path) != leftOut.end()) continue;
        if (isUnchanged(tree, step)) {
            copy(step);
        } else if (watch.goesOn()) {  // the tree may be gone when the folder has kept us long
            list(step, now, tree, watch);
        }
    }
    before_ = nullptr;
}

void HomeNames::Walk::copy(const Step& step) {
    const std::scoped_lock lock(mutex_);
    names_.copy(before_->names_, *step.before, step.folder,
                [this](NameIndex::Folder then, NameIndex::Folder now) { goInto(now, then); });
}

void HomeNames::Walk::list(const Step& step, double now, FileTree& tree, const LooseThreads::Watch& watch) {
    std::vector<std::pair<std::string, FileTree::Kind>> entries;
    const auto changed = tree.list(step.path, [&](std::string_view name, FileTree::Kind kind) {
        // What is hidden is nobody's answer, nor is what is neither a file nor a folder.
        if (watch.goesOn() && !name.starts_with('.') && kind != FileTree::Kind::other)
            entries.emplace_back(name, kind);
    });
    using Folders = std::unordered_map<std::string_view, NameIndex::Folder>;
    const auto known = step.before ? before_->names_.foldersIn(*step.before) : Folders();
    const std::scoped_lock lock(mutex_);
    const auto first = names_.size();
    for (const auto& [name, kind] : entries) {
        if (kind == FileTree::Kind::file) {
            names_.addFile(step.folder, name);
        } else {
            const auto then = known.find(name);
            goInto(names_.addFolder(step.folder, name),
                   then != known.end() ? std::optional(then->second) : std::nullopt);
        }
    }
    names_.listed(step.folder, first, now - changed > doubtful ? changed : 0);
}

HomeNames::HomeNames(Executor& executor, FileTree& tree, LooseThreads& threads, std::filesystem::path home)
    : executor_(executor),
      tree_(tree),
      threads_(threads),
      home_(home.string()),
      forgetting_(executor),
      reader_(SerialExecutor::AtEnd::drop),
      tasks_(executor) {}

HomeNames::~HomeNames() = default;

Task<std::vector<std::string>> HomeNames::find(std::vector<std::string> tokens, NameIndex::Match match) {
    co_await refresh();
    forgetting_.once(keptFor, [this] { forget(); });
    const auto walk = whole_;
    const auto underWay = latest_ != whole_ ? latest_ : nullptr;
    co_return co_await runOn(reader_, [tokens = std::move(tokens), match, walk, underWay] {
        auto found = walk ? walk->find(tokens, match) : std::vector<std::string>();
        if (!underWay) return found;
        for (auto& path : underWay->find(tokens, match)) {
            if (found.size() < mostResults && std::ranges::find(found, path) == found.end())
                found.push_back(std::move(path));
        }
        return found;
    });
}

/// Has the names read where they are not fresh, and waits for that, though not for long.
Task<void> HomeNames::refresh() {
    if (whole_ && executor_.now() - whole_->began < fresh) co_return;
    if (latest_ == whole_) {
        latest_ = std::make_shared<Walk>(home_, whole_);
        latest_->began = executor_.now();
        tasks_.spawn(walkOn(latest_));
    }
    const auto wait = [](Completion<void> ended) -> Task<void> { co_await ended; };
    co_await withTimeout(wait(latest_->ended), patience);
}

void HomeNames::forget() {
    if (latest_ == whole_) latest_ = nullptr;
    whole_ = nullptr;
}

Task<void> HomeNames::walkOn(std::shared_ptr<Walk> walk) {
    const bool isWhole = (co_await threads_.run(
                              home_,
                              [walk, now = executor_.date(), &tree = tree_,
                               leftOut = tree_.networkMounts()](const LooseThreads::Watch& watch) {
                                  walk->run(now, tree, leftOut, watch);
                                  return true;
                              },
                              hangsAfter))
                             .has_value();
    // One that hangs is not tried again at once: what it came to is all there is.
    if (isWhole || !whole_) whole_ = walk;
    latest_ = whole_;
    walk->ended.complete();
}

}  // namespace dorix
