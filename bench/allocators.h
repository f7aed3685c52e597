#pragma once

#include <cstddef>
#include <cstdlib>

#include "foundation/memory.h"

/// The allocators that the workloads run over. Each is a class with static operations of one shape.
namespace bench {

struct Library {
    static constexpr const char* kName = "library";
    static void* Alloc(std::size_t size) { return AUX::Alloc(size); }
    static void* Realloc(void* block, std::size_t size) { return AUX::Realloc(block, size); }
    static void* Resize(void* block, std::size_t size) { return AUX::Resize(block, size); }
    static void Free(void* block) { AUX::Free(block); }
};

/// What the process itself uses; the measure of all others.
struct Glibc {
    static constexpr const char* kName = "glibc";
    static void* Alloc(std::size_t size) { return std::malloc(size); }
    static void* Realloc(void* block, std::size_t size) { return std::realloc(block, size); }
    static void* Resize(void* block, std::size_t size) { return std::realloc(block, size); }
    static void Free(void* block) { std::free(block); }
};

/// What a peer is loaded from, and the names of its operations there.
struct PeerNames {
    const char* name;
    const char* module;
    const char* alloc;
    const char* realloc;
    const char* free;
};
inline constexpr PeerNames kMimalloc{"mimalloc", "libmimalloc.so.2", "mi_malloc", "mi_realloc",
                                     "mi_free"};
inline constexpr PeerNames kJemalloc{"jemalloc", "libjemalloc.so.2", "malloc", "realloc", "free"};
inline constexpr PeerNames kTcmalloc{"tcmalloc", "libtcmalloc_minimal.so.4", "tc_malloc",
                                     "tc_realloc", "tc_free"};

/// Operations of a loaded module.
struct PeerCalls {
    void* (*alloc)(std::size_t) = nullptr;
    void* (*realloc)(void*, std::size_t) = nullptr;
    void (*free)(void*) = nullptr;
};

/// An allocator out of a module of its own, so that `malloc` of the process stays glibc's. Calls go
/// through a pointer, as glibc's go through the linkage table.
template <const PeerNames& names>
struct Peer {
    static constexpr const char* kName = names.name;
    static inline PeerCalls calls;
    static void* Alloc(std::size_t size) { return calls.alloc(size); }
    static void* Realloc(void* block, std::size_t size) { return calls.realloc(block, size); }
    static void* Resize(void* block, std::size_t size) { return calls.realloc(block, size); }
    static void Free(void* block) { calls.free(block); }
};
using Mimalloc = Peer<kMimalloc>;
using Jemalloc = Peer<kJemalloc>;
using Tcmalloc = Peer<kTcmalloc>;

/// Loads the three peers, and proves of each that its operations lie in its module and that none of
/// its blocks are glibc's. Peers want room for thread-local data that a process must reserve at its
/// start: the process may begin anew here, with the reserve set. Ends the process if a peer cannot
/// be had, with what to install.
void LoadPeers(char** arguments);

}  // namespace bench
