#pragma once

#include "base/async/SerialExecutor.h"
#include "base/async/TaskScope.h"
#include "memory/embedding/Embedder.h"
#include "platform/BackgroundWork.h"
#include "platform/FileMapper.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace dorix {

/// A static embedding model in the format of model2vec (https://github.com/MinishLab/model2vec): the vector
/// of a text is the mean of those of its tokens, made as long as one. A folder holds the vectors in
/// "model.safetensors", which is mapped, so that only what is used of it takes memory, and "tokenizer.json",
/// which is read by the first `prepare`. Tokens that the model does not know are left out, and a text is not
/// cut off, which model2vec does after 512 tokens: what the memory has embedded is shorter.
class StaticEmbedder final : public Embedder {
 public:
    /// There may be no model in the folder. What it is given outlives it.
    StaticEmbedder(Executor& main, FileMapper& mapper, BackgroundWork& background,
                   std::filesystem::path folder);
    ~StaticEmbedder() override;

    Task<bool> prepare() override;
    Task<std::optional<std::vector<float>>> embed(std::string text, Pace pace) override;
    std::string identity() const override { return identity_; }

    /// The files are about to go or to change: none of them is used any more before the next `prepare`, which
    /// looks anew, also where the model was found to be damaged.
    void letGo();

 private:
    struct Model;

    std::shared_ptr<const Model> read() const;
    Task<void> load();

    FileMapper& mapper_;
    BackgroundWork& background_;
    const std::filesystem::path folder_;
    std::shared_ptr<const Model> model_;  // what is in use; shared with the work that uses it
    std::string identity_;
    bool isDamaged_ = false;
    std::uint64_t generation_ = 0;  // of the files
    SerialExecutor thread_{SerialExecutor::AtEnd::drop};
    SerialExecutor idleThread_{SerialExecutor::AtEnd::drop};
    std::optional<TaskHandle<void>> loading_;
    TaskScope tasks_;
};

}  // namespace dorix
