#pragma once

#include "service/storage/Database.h"

namespace dorix::service {

/// Brings the tables to what this program expects, a step at a time: a process that is killed meanwhile
/// leaves what there was before the step, and the next start goes on. Throws StorageError, also when the
/// tables are of a newer program than this one; then nothing was changed.
void migrate(Database& database);

}  // namespace dorix::service
