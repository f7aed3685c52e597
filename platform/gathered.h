#pragma once

#include <atomic>

/// Words that many source files define and the linker lays side by side, in each module on its own.
/// A definition is `QVD_NAMED_TABLE_WORD constinit std::atomic<const void*> name(&thing)`.

namespace platform {

/// Some of the words may be null: the linker fills gaps so.
struct GatheredWords {
    std::atomic<const void*>* first;
    std::atomic<const void*>* end;
};

}  // namespace platform

#ifdef _WIN32

// Sections of one name are in the order of what follows the dollar sign.
#define QVD_NAMED_TABLE_WORD [[gnu::section(".data$CABNVT1"), gnu::used]]

namespace platform {

GatheredWords NamedTableWords() noexcept;

}  // namespace platform

#else

#define QVD_NAMED_TABLE_WORD [[gnu::section("cab_named_tables"), gnu::used]]

// The linker's names for the ends of the section, null if no file has put anything there.
extern "C" {
[[gnu::weak, gnu::visibility("hidden")]] extern std::atomic<const void*> __start_cab_named_tables[];
[[gnu::weak, gnu::visibility("hidden")]] extern std::atomic<const void*> __stop_cab_named_tables[];
}

namespace platform {

inline GatheredWords NamedTableWords() noexcept {
    return {__start_cab_named_tables, __stop_cab_named_tables};
}

}  // namespace platform

#endif
