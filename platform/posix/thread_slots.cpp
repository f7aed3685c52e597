#include "platform/posix/thread_slots.h"

#include <mutex>
#include <new>

#include "platform/posix/faults.h"
#include "platform/sync.h"

namespace platform {
namespace {

struct SlotNote {
    void* value;
    ThreadSlots::AtEnd atEnd;
    const void* slot;
    const void* thread;
    SlotNote* next;
};

// Held during the end-of-thread calls too: a module whose code they are cannot go meanwhile.
// It needs no destructor, so it serves until the process has ended.
constinit std::mutex notesLock;

constinit SlotNote* firstNote = nullptr;

void RunAndDelete(SlotNote* note) noexcept {
    note->atEnd(note->value);
    delete note;
}

// The thread's note may have been ended with its slot while the thread came here, and its address
// may be that of another thread's note by now.
void EndThread(void* ended) noexcept {
    const std::lock_guard guard(notesLock);
    for (SlotNote** link = &firstNote; *link; link = &(*link)->next) {
        if (*link != ended || (*link)->thread != ThisThread()) continue;
        SlotNote* const note = *link;
        *link = note->next;
        RunAndDelete(note);
        return;
    }
}

}  // namespace

bool ThreadSlots::Create(AtEnd atEnd) noexcept {
    if (InjectFault("FlsAlloc") || pthread_key_create(&key_, EndThread) != 0) return false;
    atEnd_ = atEnd;
    return true;
}

void ThreadSlots::Destroy() noexcept {
    if (!atEnd_) return;
    pthread_key_delete(key_);
    const std::lock_guard guard(notesLock);
    for (SlotNote** link = &firstNote; *link;) {
        SlotNote* const note = *link;
        if (note->slot != this) {
            link = &note->next;
            continue;
        }
        *link = note->next;
        RunAndDelete(note);
    }
    atEnd_ = nullptr;
}

bool ThreadSlots::Note(void* value) noexcept {
    if (!atEnd_ || InjectFault("FlsSetValue")) return false;
    const std::lock_guard guard(notesLock);
    auto* const note = new (std::nothrow) SlotNote{value, atEnd_, this, ThisThread(), firstNote};
    if (!note) return false;
    if (pthread_setspecific(key_, note) != 0) {
        delete note;
        return false;
    }
    firstNote = note;
    return true;
}

}  // namespace platform
