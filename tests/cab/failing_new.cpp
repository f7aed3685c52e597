#include "tests/cab/failing_new.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<std::uint64_t> countdown = 0;
std::atomic<bool> hasFailed = false;
std::atomic<bool> countsAll = true;
std::atomic<std::int64_t> live = 0;

void* Give(std::size_t size, bool isCounted) noexcept {
    if (isCounted && countdown != 0 && --countdown == 0) {
        hasFailed = true;
        return nullptr;
    }
    void* const block = std::malloc(size ? size : 1);
    if (block) ++live;
    return block;
}

}  // namespace

namespace bag_test {

void FailNew(std::uint64_t n, Requests which) noexcept {
    if (n != 0) hasFailed = false;
    countsAll = which == Requests::All;
    countdown = n;
}
bool HasNewFailed() noexcept { return hasFailed; }
std::int64_t LiveNew() noexcept { return live; }

}  // namespace bag_test

void* operator new(std::size_t size) {
    void* const block = Give(size, countsAll);
    if (!block) throw std::bad_alloc();
    return block;
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return Give(size, true); }
void* operator new[](std::size_t size) { return operator new(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return Give(size, true); }
void operator delete(void* block) noexcept {
    if (block) --live;
    std::free(block);
}
void operator delete(void* block, std::size_t) noexcept { operator delete(block); }
void operator delete[](void* block) noexcept { operator delete(block); }
void operator delete[](void* block, std::size_t) noexcept { operator delete(block); }
