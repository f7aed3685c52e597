#include "cab/com_stream.h"

#include <algorithm>
#include <utility>

#include "platform/com_object.h"

namespace AUX::CAB {
namespace {

/// Bytes of one step of CopyTo.
constexpr std::int64_t kCopyStep = 16 * 1024;

class ComStream final : public platform::ComObject<IStream> {
public:
    explicit ComStream(std::unique_ptr<Stream> stream) noexcept : stream_(std::move(stream)) {}

    HRESULT STDMETHODCALLTYPE Read(void* buffer, ULONG bytes, ULONG* done) noexcept override {
        if (done) *done = 0;
        if (!buffer) return STG_E_INVALIDPOINTER;
        std::int64_t count = 0;
        const Status status = stream_->Read(buffer, bytes, count);
        if (done) *done = static_cast<ULONG>(count);
        if (status == kStatusEndOfData) return S_FALSE;
        if (IsFailure(status)) return status;
        return count < static_cast<std::int64_t>(bytes) ? S_FALSE : S_OK;
    }

    HRESULT STDMETHODCALLTYPE Write(const void* data, ULONG bytes, ULONG* done) noexcept override {
        if (done) *done = 0;
        if (!data) return STG_E_INVALIDPOINTER;
        std::int64_t count = 0;
        const Status status = stream_->Write(data, bytes, count);
        if (done) *done = static_cast<ULONG>(count);
        return IsFailure(status) ? status : S_OK;
    }

    HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER move, DWORD origin,
                                   ULARGE_INTEGER* position) noexcept override {
        if (origin > STREAM_SEEK_END) return STG_E_INVALIDFUNCTION;
        // The origins have the numbers of SeekMode.
        if (IsFailure(stream_->Seek(static_cast<SeekMode>(origin), move.QuadPart))) {
            return STG_E_INVALIDFUNCTION;
        }
        if (position) position->QuadPart = static_cast<ULONGLONG>(stream_->GetPosition());
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER size) noexcept override {
        const Status status = stream_->SetSize(static_cast<std::int64_t>(size.QuadPart));
        return IsFailure(status) ? status : S_OK;
    }

    HRESULT STDMETHODCALLTYPE CopyTo(IStream* target, ULARGE_INTEGER bytes, ULARGE_INTEGER* read,
                                     ULARGE_INTEGER* written) noexcept override {
        ULONGLONG hasRead = 0;
        ULONGLONG hasWritten = 0;
        HRESULT result = target ? S_OK : STG_E_INVALIDPOINTER;
        char buffer[kCopyStep];
        while (SUCCEEDED(result) && hasRead < bytes.QuadPart) {
            const auto step =
                static_cast<ULONG>(std::min<ULONGLONG>(sizeof buffer, bytes.QuadPart - hasRead));
            ULONG got = 0;
            result = Read(buffer, step, &got);
            hasRead += got;
            if (FAILED(result) || got == 0) break;
            ULONG put = 0;
            result = target->Write(buffer, got, &put);
            hasWritten += put;
            if (SUCCEEDED(result) && put < got) break;
        }
        if (read) read->QuadPart = hasRead;
        if (written) written->QuadPart = hasWritten;
        return FAILED(result) ? result : S_OK;
    }

    HRESULT STDMETHODCALLTYPE Commit(DWORD) noexcept override {
        const Status status = stream_->Flush();
        return IsFailure(status) ? status : S_OK;
    }
    HRESULT STDMETHODCALLTYPE Revert() noexcept override { return S_OK; }
    HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) noexcept override {
        return STG_E_INVALIDFUNCTION;
    }
    HRESULT STDMETHODCALLTYPE UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER,
                                           DWORD) noexcept override {
        return STG_E_INVALIDFUNCTION;
    }

    /// Without a name, whatever the flags.
    HRESULT STDMETHODCALLTYPE Stat(STATSTG* facts, DWORD) noexcept override {
        if (!facts) return STG_E_INVALIDPOINTER;
        *facts = {};
        facts->type = STGTY_STREAM;
        facts->cbSize.QuadPart = static_cast<ULONGLONG>(stream_->GetSize());
        const std::uint32_t access = stream_->GetAccess();
        facts->grfMode = access == kAccessMask    ? STGM_READWRITE
                         : access == kAccessWrite ? STGM_WRITE
                                                  : STGM_READ;
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE Clone(IStream** clone) noexcept override {
        if (!clone) return STG_E_INVALIDPOINTER;
        Status status = 0;
        std::unique_ptr<Stream> copy = stream_->Clone(&status);
        if (copy) status = copy->Seek(SeekMode::Start, stream_->GetPosition());
        *clone = IsFailure(status) ? nullptr : MakeComStream(std::move(copy)).Detach();
        if (*clone) return S_OK;
        return IsFailure(status) ? status : E_OUTOFMEMORY;
    }

private:
    void* AnswersAlso(REFIID id) noexcept override {
        if (!IsEqualIID(id, platform::InterfaceId<ISequentialStream>())) return nullptr;
        return static_cast<ISequentialStream*>(this);
    }

    std::unique_ptr<Stream> stream_;
};

}  // namespace

platform::ComPtr<IStream> MakeComStream(std::unique_ptr<Stream> stream) noexcept {
    platform::ComPtr<IStream> made;
    if (stream) made.Attach(platform::MakeObject<ComStream>(std::move(stream)).Detach());
    return made;
}

}  // namespace AUX::CAB
