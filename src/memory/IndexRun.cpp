#include "memory/IndexRun.h"

#include "base/Error.h"
#include "base/async/Completion.h"
#include "base/text/Line.h"
#include "base/text/Text.h"
#include "localdata/Language.h"
#include "routing/IntentRules.h"

#include <algorithm>
#include <utility>

namespace dorix {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t mostCharacters = 400'000;  // of a file
constexpr ChunkSizes fileSizes{.size = 1000, .overlap = 150, .maxChunks = 200};
constexpr ChunkSizes historySizes{.size = 1000, .overlap = 150, .maxChunks = 6};
constexpr const char* file = "file";
constexpr const char* history = "history";

/// The pieces of a text that hold no credential.
std::vector<std::string> pieces(const std::string& text, const ChunkSizes& sizes) {
    auto found = chunks(text, sizes);
    std::erase_if(found, [](const std::string& piece) { return IntentRules::holdsSecret(piece); });
    return found;
}

std::string textOf(const HistoryItem& item) {
    return label(item.kind) + " en " + item.app + ": " + item.query + "\n" + item.answer;
}

std::string extensionOf(const fs::path& path) {
    const auto extension = text::lowercase(path.extension().string());
    return extension.empty() ? extension : extension.substr(1);
}

bool isKnown(const std::unordered_map<std::string, double>& known, const std::string& path, double modified) {
    const auto found = known.find(path);
    return found != known.end() && found->second == modified;
}

}  // namespace

Task<void> IndexRun::done() {
    embeds_ = co_await prepare();
    onAvailable(embeds_);
    known_ = co_await parts_.store.docsModified(history, embeds_);
    co_await addHistory();
    known_ = co_await parts_.store.docsModified(file, embeds_);
    for (const auto& folder : sources_.folders) co_await addFolder(folder);
    co_await removeOthers();
    while (co_await parts_.store.mergeWords()) co_await parts_.pace.mayGoOn();
}

Task<bool> IndexRun::prepare() {
    if (!co_await parts_.embedder.prepare()) co_return false;
    co_await parts_.store.useVectorsOf(parts_.embedder.identity());
    co_return true;
}

Task<void> IndexRun::addHistory() {
    for (const auto& item : sources_.history) {
        const auto path = "dorix://historial/" + item.id;
        if (item.answer.empty() || isKnown(known_, path, item.createdAt) || isModelGone()) continue;
        co_await parts_.pace.mayGoOn();
        co_await put({.document = {.path = path,
                                   .title = item.title,
                                   .kind = history,
                                   .modified = item.createdAt,
                                   .chunks = {}},
                      .head = {},
                      .text = textOf(item),
                      .sizes = historySizes});
    }
}

Task<void> IndexRun::addFolder(fs::path folder) {
    auto found = co_await parts_.walks.filesIn(std::move(folder));
    silent_.insert(silent_.end(), found.silent.begin(), found.silent.end());
    for (auto& one : found.files) {
        seen_.insert(one.path);
        if (isKnown(known_, one.path, one.modified)) continue;
        // A folder may lie within another one of the user's.
        known_[one.path] = one.modified;
        co_await addFile(std::move(one));
    }
}

Task<void> IndexRun::addFile(FoundFile found) {
    const fs::path path = found.path;
    const auto name = text::asLine(path.filename().string());
    const bool isPutOff = isModelGone() || lateMounts_.contains(found.mount);
    if (isPutOff || !parts_.reader.reads(extensionOf(path))) co_return;
    co_await parts_.pace.mayGoOn();
    onProgress(formatText(tr("Leyendo %@…"), {name}));
    const auto text = co_await read(found);
    if (!text) co_return;
    const bool isPut = co_await put(
        {.document =
             {.path = found.path, .title = name, .kind = file, .modified = found.modified, .chunks = {}},
         .head = name + "\n",
         .text = *text,
         .sizes = fileSizes});
    if (isPut) ++updated_;
}

/// "" of a document without any. Nothing where it is the reader that fails: put down as one without text, the
/// document would not be read again before it changes. It stays as it was, and the next run tries again. So
/// does all else that another computer has which lists its files and does not give them: each would be
/// waited for.
Task<std::optional<std::string>> IndexRun::read(const FoundFile& found) {
    try {
        co_return (co_await parts_.reader.text(found.path, mostCharacters)).value_or("");
    } catch (const DocumentLate&) {
        if (!found.mount.empty()) lateMounts_.insert(found.mount);
        co_return std::nullopt;
    } catch (const Error&) {
        co_return std::nullopt;
    }
}

/// What a folder holds that did not answer stays as it was.
Task<void> IndexRun::removeOthers() {
    const auto mayBeThere = [this](const std::string& path) {
        return seen_.contains(path) ||
               std::ranges::any_of(silent_, [&](const auto& folder) { return isBelow(path, folder); });
    };
    for (const auto& path : co_await parts_.store.docPaths(file)) {
        if (mayBeThere(path)) continue;
        co_await parts_.pace.mayGoOn();
        co_await parts_.store.removeDoc(path);
    }
}

/// Cuts the text, gives its pieces their vectors, and puts it in; false where the model has gone meanwhile.
/// It may be back at the next run, which finds the document as it was.
Task<bool> IndexRun::put(Source source) {
    if (!source.text.empty()) {
        auto found = co_await runOn(parts_.worker, [text = std::move(source.text), sizes = source.sizes] {
            return pieces(text, sizes);
        });
        co_await parts_.pace.mayGoOn();
        std::string model;
        do {  // a search may have changed the model meanwhile, whose vectors are not to be mixed
            model = parts_.embedder.identity();
            source.document.chunks = co_await embedded(source.head, found);
        } while (model != parts_.embedder.identity());
        if (embeds_ && model.empty()) co_return false;
        source.document.isBare = !embeds_ && !source.document.chunks.empty();
    }
    co_await parts_.store.upsert(std::move(source.document));
    co_return true;
}

Task<std::vector<MemoryChunk>> IndexRun::embedded(std::string head, std::vector<std::string> pieces) {
    std::vector<MemoryChunk> made;
    for (auto& piece : pieces) {
        std::optional<std::vector<float>> vector;
        co_await parts_.pace.mayGoOn();
        if (embeds_) vector = co_await parts_.embedder.embed(piece, Embedder::Pace::idle);
        made.push_back({.text = head + piece, .vec = std::move(vector)});
    }
    co_return made;
}

}  // namespace dorix
