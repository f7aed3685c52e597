#include "bench/allocators.h"

#include <cstdio>
#include <dlfcn.h>
#include <malloc.h>
#include <string_view>
#include <unistd.h>
#include <vector>

namespace bench {
namespace {

[[noreturn]] void Fail(const char* allocator, const char* what) {
    std::fprintf(stderr, "%s: %s\nscripts/packages.txt lists the packages of the group bench.\n",
                 allocator, what);
    std::exit(2);
}

template <class Function>
void Find(void* module, const PeerNames& peer, const char* name, Function& function) {
    function = reinterpret_cast<Function>(dlsym(module, name));
    Dl_info place{};
    if (!function || !dladdr(reinterpret_cast<void*>(function), &place)) Fail(peer.name, dlerror());
    if (std::string_view(place.dli_fname).find(peer.module) == std::string_view::npos) {
        Fail(peer.name, "an operation comes from another module");
    }
}

/// \return the bytes by which glibc's live blocks grow while `Allocator` gives out blocks.
template <class Allocator>
std::size_t SeenByGlibc() {
    std::vector<void*> blocks(1000);
    const std::size_t before = mallinfo2().uordblks;
    for (void*& block : blocks) block = Allocator::Realloc(Allocator::Alloc(100), 200);
    const std::size_t grown = mallinfo2().uordblks - before;
    for (void* block : blocks) Allocator::Free(block);
    return grown;
}

template <const PeerNames& peer>
void Load() {
    void* const module = dlopen(peer.module, RTLD_NOW | RTLD_LOCAL);
    if (!module) Fail(peer.name, dlerror());
    PeerCalls& calls = Peer<peer>::calls;
    Find(module, peer, peer.alloc, calls.alloc);
    Find(module, peer, peer.realloc, calls.realloc);
    Find(module, peer, peer.free, calls.free);
    if (SeenByGlibc<Peer<peer>>() != 0) Fail(peer.name, "its blocks come from glibc");
}

}  // namespace

void LoadPeers(char** arguments) {
    constexpr const char* kTunables = "GLIBC_TUNABLES";
    constexpr const char* kReserve = "glibc.rtld.optional_static_tls=65536";
    if (!std::getenv(kTunables)) {
        setenv(kTunables, kReserve, 1);
        execv("/proc/self/exe", arguments);
    }
    if (SeenByGlibc<Glibc>() == 0) Fail(Glibc::kName, "its own blocks cannot be seen");
    Load<kMimalloc>();
    Load<kJemalloc>();
    Load<kTcmalloc>();
}

}  // namespace bench
