#pragma once

#include "platform/posix/registry_database.h"

namespace platform {

/// The layout of registry.db. Names and data are blobs of the exact bytes; names are UTF-16,
/// little-endian, `folded` by FoldCase for comparing. `written` is a FILETIME in 100 ns units.
/// Ids are never used twice, so that a handle to a deleted key finds nothing.
inline constexpr std::int64_t kSchemaVersion = 1;
inline constexpr std::int64_t kApplicationId = 0x51564452;  // "QVDR"

/// The ids of the roots, whose rows the schema's creation adds.
inline constexpr std::int64_t kCurrentUserId = 1;
inline constexpr std::int64_t kLocalMachineId = 2;

/// Makes the tables, inside a transaction of the caller.
extern const char* const kCreateSchema;

/// The SQL text of a statement.
const char* QueryText(Query query);

}  // namespace platform
