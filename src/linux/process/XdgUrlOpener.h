#pragma once

#include "linux/loop/FdWatcher.h"
#include "linux/process/ReapedChildren.h"
#include "platform/UrlOpener.h"

namespace dorix {

/// Opens addresses by xdg-open, which knows how every desktop wants it done.
class XdgUrlOpener final : public UrlOpener {
 public:
    explicit XdgUrlOpener(FdWatcher& watcher) : children_(watcher) {}

    bool open(const std::string& url) override;

 private:
    ReapedChildren children_;
};

}  // namespace dorix
