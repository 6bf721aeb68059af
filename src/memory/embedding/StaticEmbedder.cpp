#include "memory/embedding/StaticEmbedder.h"

#include "base/Log.h"
#include "base/Sha256.h"
#include "base/async/Completion.h"
#include "memory/embedding/EmbeddingTable.h"
#include "memory/embedding/Tokenizer.h"
#include "memory/embedding/UnitLength.h"

#include <algorithm>
#include <expected>
#include <ranges>
#include <utility>

namespace dorix {

namespace {

constexpr auto tableName = "model.safetensors";
constexpr auto tokenizerName = "tokenizer.json";
constexpr std::size_t sample =
    64UZ * 1024;  // bytes at either end of the vectors, by which models are told apart

std::string identityOf(const EmbeddingTable& table, std::string_view tokenizer) {
    Sha256 sum;
    sum.update(tokenizer);
    sum.update(table.bytes().substr(0, sample));
    sum.update(table.bytes().substr(table.bytes().size() - std::min(sample, table.bytes().size())));
    return "model2vec " + std::to_string(table.rows()) + "x" + std::to_string(table.dimension()) + " " +
           sum.hex();
}

}  // namespace

struct StaticEmbedder::Model {
    std::unique_ptr<MappedFile> file;  // that the table lies in
    EmbeddingTable table;
    Tokenizer tokenizer;
    std::string identity;

    static std::expected<Model, std::string> in(FileMapper& mapper, const std::filesystem::path& folder) {
        auto file = mapper.map(folder / tableName);
        const auto tokenizerFile = mapper.map(folder / tokenizerName);
        if (!file || !tokenizerFile) return std::unexpected("a file is missing");
        const auto table = EmbeddingTable::in(file->bytes());
        if (!table) return std::unexpected(std::string(tableName) + ": " + table.error());
        auto tokenizer = Tokenizer::parse(tokenizerFile->bytes());
        if (!tokenizer) return std::unexpected(std::string(tokenizerName) + ": " + tokenizer.error());
        if (tokenizer->size() != table->rows()) return std::unexpected("not as many vectors as tokens");
        auto identity = identityOf(*table, tokenizerFile->bytes());
        return Model{.file = std::move(file),
                     .table = *table,
                     .tokenizer = *std::move(tokenizer),
                     .identity = std::move(identity)};
    }

    std::optional<std::vector<float>> embed(const std::string& text) const;
};

std::optional<std::vector<float>> StaticEmbedder::Model::embed(const std::string& text) const {
    const auto tokens = tokenizer.tokens(text);
    if (tokens.empty()) return std::nullopt;
    std::vector<double> sums(table.dimension());
    for (const auto token : tokens) table.addRow(token, sums);
    std::vector<float> vector(sums.size());
    std::ranges::transform(sums, vector.begin(), [count = static_cast<double>(tokens.size())](double sum) {
        return static_cast<float>(sum / count);
    });
    if (!makeUnitLength(vector)) return std::nullopt;
    return vector;
}

StaticEmbedder::StaticEmbedder(Executor& main, FileMapper& mapper, BackgroundWork& background,
                               std::filesystem::path folder)
    : mapper_(mapper), background_(background), folder_(std::move(folder)), tasks_(main) {}

StaticEmbedder::~StaticEmbedder() = default;

std::shared_ptr<const StaticEmbedder::Model> StaticEmbedder::read() const {
    auto model = Model::in(mapper_, folder_);
    if (model) return std::make_shared<const Model>(*std::move(model));
    logLine("the embedding model in " + folder_.string() + " is not used: " + model.error());
    return nullptr;
}

Task<bool> StaticEmbedder::prepare() {
    if (model_) co_return true;
    std::error_code ignored;
    if (isDamaged_ || !std::filesystem::exists(folder_, ignored)) co_return false;
    // Whoever asks may not have the patience; what has been read is kept all the same.
    if (!loading_ || loading_->isDone()) loading_ = tasks_.spawn(load());
    const auto loading = *loading_;
    co_await loading;
    co_return model_ != nullptr;
}

Task<void> StaticEmbedder::load() {
    const auto generation = generation_;
    auto model = co_await runOn(thread_, [this] { return read(); });
    if (generation != generation_) co_return;
    isDamaged_ = model == nullptr;
    if (model) idleThread_.post([&background = background_] { background.makeThreadIdle(); });
    identity_ = model ? model->identity : "";
    model_ = std::move(model);
}

Task<std::optional<std::vector<float>>> StaticEmbedder::embed(std::string text, Pace pace) {
    if (!model_ || text.empty()) co_return std::nullopt;
    auto& thread = pace == Pace::idle ? idleThread_ : thread_;
    co_return co_await runOn(thread, [model = model_, text = std::move(text)] { return model->embed(text); });
}

void StaticEmbedder::letGo() {
    model_.reset();
    identity_.clear();
    isDamaged_ = false;
    ++generation_;
}

}  // namespace dorix
