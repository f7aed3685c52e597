#include "cab/data_stream.h"

#include "cab/store.h"
#include "foundation/dyn_mem_stream.h"
#include "foundation/temp_mapped_file_stream.h"

namespace AUX::CAB {

namespace {

constexpr std::int64_t kGrowByHalf = -2;

std::unique_ptr<Stream> MakeInMemory() noexcept {
    std::unique_ptr<DynMemStream> made(new (std::nothrow) DynMemStream);
    if (!made || IsFailure(made->Open(0, kGrowByHalf))) return nullptr;
    return made;
}

// The system deletes the file with its handle, so that it goes when the process is killed too.
std::unique_ptr<Stream> MakeInFile() noexcept {
    std::unique_ptr<TempMappedFileStream> made(new (std::nothrow) TempMappedFileStream);
    if (!made || IsFailure(made->OpenTemp(TEXT("bag"), nullptr, false))) return nullptr;
    return made;
}

}  // namespace

Status CopyWhole(Stream& source, std::unique_ptr<Stream>& copy) noexcept {
    const std::int64_t size = source.GetSize();
    std::unique_ptr<Stream> made = size > kMaxBytesInMemory ? MakeInFile() : nullptr;
    if (!made) made = MakeInMemory();
    if (!made) return kStatusInsufficientMemory;
    if (size > 0) {
        std::int64_t count = 0;
        const Status status = made->CopyFrom(source, SeekMode::Start, 0, size, count);
        if (IsFailure(status)) return status;
        if (count != size) return kStatusEndOfData;
        made->Rewind();
    }
    copy = std::move(made);
    return kStatusOk;
}

Stream* DataStream::GetStream() noexcept {
    if (!value) value = MakeInMemory();
    return value.get();
}

bool DataStream::Equals(DataItem* other, std::uint32_t equalFlags) noexcept {
    DataItem* const real = other ? other->Cast(Kind::Stream) : nullptr;
    if (!real) return false;
    if (equalFlags & kEqualAnyStream || real == this) return true;
    Stream* const mine = GetStream();
    Stream* const its = real->GetStream();
    return mine && its && CompareStreams(*mine, *its) == 1;
}

bool DataStream::SetStream(Stream* newStream, bool attach) noexcept {
    if (!newStream || !newStream->IsOpen()) return false;
    if (newStream == value.get()) return true;
    if (attach) {
        value.reset(newStream);
    } else {
        std::unique_ptr<Stream> copy;
        if (IsFailure(CopyWhole(*newStream, copy))) return false;
        value = std::move(copy);
    }
    MarkSet();
    return true;
}

bool DataStream::WriteTo(DataWriter& sink, bool) noexcept {
    Stream* const own = GetStream();
    return own && sink.PutStream(*own);
}

bool DataStream::IsDefault() noexcept { return GetSpec() && (!value || value->GetSize() == 0); }

bool DataStream::AssignValue(DataItem& source, bool) noexcept {
    DataItem* const real = source.Cast(Kind::Stream);
    Stream* const from = real ? real->GetStream() : nullptr;
    return from && SetStream(from, false);
}

bool DataStream::ResetValue() noexcept {
    if (!value || value->GetSize() == 0) return false;
    // A stream that cannot be cut, such as one for reading only, is given up instead.
    if (IsFailure(value->SetSize(0))) value.reset();
    return true;
}

}  // namespace AUX::CAB
