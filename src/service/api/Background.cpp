#include "service/api/Background.h"

#include "service/storage/Schema.h"

#include <cstddef>

namespace dorix::service {

StorageThreads::StorageThreads(const std::string& address)
    : pool_(static_cast<std::size_t>(usefulConnections(address))) {
    for (int i = 0; i < usefulConnections(address); ++i) free_.push_back(connect(address));
    migrate(*free_.front());
}

StorageThreads::~StorageThreads() { pool_.join(); }

StorageThreads::Borrowed::Borrowed(StorageThreads& from) : owner(from) {
    const std::lock_guard lock(owner.mutex_);
    database = std::move(owner.free_.back());
    owner.free_.pop_back();
}

StorageThreads::Borrowed::~Borrowed() {
    const std::lock_guard lock(owner.mutex_);
    owner.free_.push_back(std::move(database));
}

}  // namespace dorix::service
