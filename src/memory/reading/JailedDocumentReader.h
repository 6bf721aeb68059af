#pragma once

#include "memory/DocumentReader.h"
#include "reading/helper/ReadingHelper.h"

namespace dorix {

/// Has documents read by the helper, one at a time: whatever a document does costs that document alone. Main
/// executor; must outlive the tasks that it gives.
class JailedDocumentReader final : public DocumentReader {
 public:
    /// Whether the user waits for the text, or it is read with what others leave of processor and disk.
    enum class Pace { awaited, idle };

    /// Both must outlive it. Looks at the disk.
    JailedDocumentReader(Executor& main, HelperProcesses& processes, Pace pace)
        : helper_(main, processes), pace_(pace) {}

    /// Nothing where the program is not installed.
    bool reads(std::string_view extension) const override;
    /// Takes half a minute at most, and two minutes when idle.
    Task<std::optional<std::string>> text(std::filesystem::path file, std::size_t limit) override;

 private:
    ReadingHelper helper_;
    const Pace pace_;
};

}  // namespace dorix
