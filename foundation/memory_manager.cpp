#include "foundation/memory_manager.h"

#include <cstdio>

#include "foundation/bit_kernels.h"
#include "foundation/memory_threads.h"
#include "foundation/system_facts.h"
#include "platform/memory.h"
#include "platform/sanitizer.h"
#include "platform/security.h"
#include "platform/static_order.h"
#include "platform/system.h"

namespace AUX::memory {
namespace {

constexpr int kLayoutMajor = 2;
constexpr int kLayoutMinor = 0;

class Run {
public:
    Run() noexcept { manager.Start(); }
    ~Run() { manager.End(); }
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;
};
QVD_STARTS_FIRST const Run run;

}  // namespace

constinit MemManager manager;

void MemManager::Start() noexcept {
    LearnFacts();
    ChooseBitKernels();
    (void)std::snprintf(name_, sizeof(name_), "s.dscrt.mks.%s%s.%d.%d.%X", "-", "-", kLayoutMajor,
                        kLayoutMinor, static_cast<unsigned>(GetCurrentProcessId()));
    // Threads that act for another user must reach the objects too.
    SECURITY_DESCRIPTOR everybody;
    SECURITY_ATTRIBUTES security{sizeof(security), &everybody, FALSE};
    if (!InitializeSecurityDescriptor(&everybody, SECURITY_DESCRIPTOR_REVISION) ||
        !SetSecurityDescriptorDacl(&everybody, TRUE, nullptr, FALSE) ||
        !slot_.Create(OnThreadEnd)) {
        return;
    }
    mutex_ = CreateMutexA(&security, FALSE, name_);
    if (!mutex_ || WaitForSingleObject(mutex_, INFINITE) == WAIT_FAILED) return;
    name_[0] = 'm';
    const HANDLE mapping = CreateFileMappingA(INVALID_HANDLE_VALUE, &security, PAGE_READWRITE, 0,
                                              sizeof(MemShared), name_);
    if (mapping) Meet(mapping);
    (void)ReleaseMutex(mutex_);
}

// Takes over the mapping's handle. The first module's view serves all of them.
void MemManager::Meet(HANDLE mapping) noexcept {
    auto* const view =
        static_cast<MemShared*>(MapViewOfFile(mapping, FILE_MAP_WRITE, 0, 0, sizeof(MemShared)));
    if (view && view->view) {
        root_ = &view->view->root;
    } else if (view && SetUp(*view, mapping)) {
        root_ = &view->root;
    }
    if (root_) ++root_->moduleCount;
    if (root_ && root_ == &view->root) return;
    if (view) (void)UnmapViewOfFile(view);
    (void)CloseHandle(mapping);
}

bool MemManager::SetUp(MemShared& shared, HANDLE mapping) noexcept {
    MemRoot& root = shared.root;
    root.globalHeap = MemHeap::Make(0);
    if (!root.globalHeap) return false;
    platform::LookForPointersIn(&shared, sizeof(shared));
    InitThreads(root);
    for (std::uint32_t i = 0; i < kClassCount; ++i) root.blockSizes[i] = BlockSizeOfClass(i);
    for (std::uint32_t i = 0; i < kSizeSlots; ++i) root.classes[i] = ClassOfSize(i * 4);
    shared.mapping = mapping;
    shared.view = &shared;
    return true;
}

void MemManager::End() noexcept {
    const bool isLocked = mutex_ && WaitForSingleObject(mutex_, INFINITE) != WAIT_FAILED;
    // Other threads that allocated through this module keep nothing of it behind.
    slot_.Destroy();
    if (root_ && --root_->moduleCount == 0) EndProcess();
    root_ = nullptr;
    hasEnded_ = true;
    if (isLocked) (void)ReleaseMutex(mutex_);
    if (mutex_) (void)CloseHandle(mutex_);
    mutex_ = nullptr;
}

void MemManager::EndProcess() noexcept {
    MemShared& shared = *reinterpret_cast<MemShared*>(reinterpret_cast<std::byte*>(root_) -
                                                      offsetof(MemShared, root));
    FreeThreadNodes(*root_);
    root_->globalHeap->ReleaseAllRegions(*root_);
    root_->globalHeap->Delete();
    platform::LookNoMoreIn(&shared, sizeof(shared));
    const HANDLE mapping = shared.mapping;
    (void)UnmapViewOfFile(shared.view);
    (void)CloseHandle(mapping);
}

MemHeap* MemManager::AttachThread() noexcept {
    MemHeap* heap = nullptr;
    {
        const HeapLock held(*root_->globalHeap);
        const std::uint32_t threadId = GetCurrentThreadId();
        heap = FindThread(*root_, threadId);
        if (heap) {
            heap->refCount.fetch_add(1, std::memory_order_relaxed);
        } else {
            heap = MemHeap::Make(threadId);
            if (!heap) return nullptr;
            if (!EnterThread(*root_, threadId, heap)) {
                heap->Delete();
                return nullptr;
            }
        }
    }
    if (slot_.Set(heap)) return heap;
    Release(*heap);
    return nullptr;
}

void CALLBACK MemManager::OnThreadEnd(void* heap) noexcept {
    MemManager& self = Manager();
    if (self.slot_.Get() == heap) self.slot_.Forget();
    if (self.root_) self.Release(*static_cast<MemHeap*>(heap));
}

// Drops a reference. The last one of a thread's heap leaves all its pages to the global heap.
void MemManager::Release(MemHeap& heap) noexcept {
    // Only who holds the global lock may bring the count to 0: a thread that gives a block back
    // could otherwise find the heap by its page, and take a reference to what is being deleted.
    std::uint32_t count = heap.refCount.load(std::memory_order_relaxed);
    while (count > 1) {
        if (heap.refCount.compare_exchange_weak(count, count - 1, std::memory_order_release,
                                                std::memory_order_relaxed)) {
            return;
        }
    }
    MemHeap& global = *root_->globalHeap;
    const HeapLock held(global);
    if (heap.refCount.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
    RemoveThread(*root_, heap.threadId);
    {
        const HeapLock heldToo(heap);
        heap.MergeInto(*root_, global);
    }
    heap.Delete();
}

// The owner may change until the global lock is held, and may end until there is a reference to
// it. With the owner's own lock held, the block goes back as its thread would give it back.
void MemManager::TakeBackForeign(MemPage& page, void* block) noexcept {
    MemHeap& global = *root_->globalHeap;
    EnterCriticalSection(&global.lock);
    MemHeap& owner = *page.owner.load(std::memory_order_relaxed);
    owner.refCount.fetch_add(1, std::memory_order_relaxed);
    EnterCriticalSection(&owner.lock);
    LeaveCriticalSection(&global.lock);
    owner.TakeBack(*root_, page, block);
    LeaveCriticalSection(&owner.lock);
    Release(owner);
}

}  // namespace AUX::memory
