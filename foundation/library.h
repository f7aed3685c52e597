#pragma once

namespace AUX {

/// What the library does once when its module starts and ends, on the thread that loads and unloads
/// it. The library's operations work before the start and after the end too; only what is
/// registered there is missing then.
void StartLibrary() noexcept;
void EndLibrary() noexcept;

}  // namespace AUX
