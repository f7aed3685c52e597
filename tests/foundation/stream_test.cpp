// What holds for every stream: one script over three of them against a vector of bytes.

#include "foundation/stream.h"

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <vector>

#include "foundation/dyn_mem_stream.h"
#include "foundation/file_stream.h"
#include "foundation/mem_stream.h"
#include "foundation/memory_testing.h"
#include "tests/support/test_profile.h"

namespace {

using namespace AUX;
using AUX::testing::AllocationWatch;
using Bytes = std::vector<char>;

constexpr std::int64_t kFixedSize = 700;  // Of the stream that cannot grow.

std::int64_t SizeOf(const Bytes& bytes) { return static_cast<std::int64_t>(bytes.size()); }

class StreamTest : public ::testing::TestWithParam<StreamType> {
protected:
    void SetUp() override {
        if (GetParam() == StreamType::Memory) {
            fixed_.assign(kFixedSize, 0);
            std::unique_ptr<MemStream> opened(new (std::nothrow) MemStream);
            ASSERT_EQ(opened->Open(fixed_.data(), kFixedSize, 3), kStatusOk);
            stream_ = std::move(opened);
        } else if (GetParam() == StreamType::DynamicMemory) {
            std::unique_ptr<DynMemStream> opened(new (std::nothrow) DynMemStream);
            ASSERT_EQ(opened->Open(0, -2), kStatusOk);
            stream_ = std::move(opened);
        } else {
            std::unique_ptr<FileStream> opened(new (std::nothrow) FileStream);
            ASSERT_EQ(opened->Open(profile_.Path(TEXT("a.bin")).c_str(), CREATE_ALWAYS, 3, 1, 128),
                      kStatusOk);
            stream_ = std::move(opened);
        }
    }

    [[nodiscard]] bool Grows() const { return GetParam() != StreamType::Memory; }
    [[nodiscard]] Bytes Content() {
        Bytes bytes(static_cast<std::size_t>(stream_->GetSize()));
        std::int64_t count = 0;
        EXPECT_EQ(stream_->ReadAt(bytes.data(), SizeOf(bytes), SeekMode::Start, 0, count),
                  kStatusOk);
        EXPECT_EQ(count, SizeOf(bytes));
        return bytes;
    }

    test_support::TestProfile profile_;
    Bytes fixed_;
    std::unique_ptr<Stream> stream_;
};

INSTANTIATE_TEST_SUITE_P(Families, StreamTest,
                         ::testing::Values(StreamType::Memory, StreamType::DynamicMemory,
                                           StreamType::File),
                         [](const auto& parameter) {
                             return parameter.param == StreamType::Memory          ? "Memory"
                                    : parameter.param == StreamType::DynamicMemory ? "DynamicMemory"
                                                                                   : "File";
                         });

TEST_P(StreamTest, AgreesWithAVectorOfBytes) {
    constexpr unsigned kSeed = 65;
    SCOPED_TRACE(kSeed);
    std::mt19937 random(kSeed);
    const auto below = [&random](std::int64_t limit) {
        return static_cast<std::int64_t>(random() % static_cast<std::uint64_t>(limit));
    };
    Stream& stream = *stream_;
    const std::unique_ptr<Stream> clone = stream.Clone();
    ASSERT_NE(clone, nullptr);
    EXPECT_TRUE(clone->IsSameStore(stream));
    Bytes model(Grows() ? 0 : kFixedSize, 0);
    std::int64_t position = 0;
    for (int step = 0; step < 3000; ++step) {
        SCOPED_TRACE(step);
        const std::int64_t size = SizeOf(model);
        const std::int64_t length = below(300);
        Bytes buffer(static_cast<std::size_t>(length), static_cast<char>(below(256)));
        std::int64_t count = -1;
        Status expected = kStatusOk;
        switch (below(7)) {
            case 0: {
                const SeekMode mode = static_cast<SeekMode>(below(3));
                const std::int64_t offset = below(2 * size + 3) - size - 1;
                const std::int64_t base = mode == SeekMode::Start ? 0
                                          : mode == SeekMode::End ? size
                                                                  : position;
                const bool isGood = base + offset >= 0 && base + offset <= size;
                ASSERT_EQ(stream.Seek(mode, offset),
                          isGood ? kStatusOk : kStatusInvalidSeekPosition);
                if (isGood) position = base + offset;
                break;
            }
            case 1: {
                const std::int64_t fits = std::min(length, size - position);
                if (length && !fits) expected = kStatusEndOfData;
                ASSERT_EQ(stream.Read(buffer.data(), length, count), expected);
                ASSERT_EQ(count, fits);
                ASSERT_TRUE(
                    std::equal(buffer.begin(), buffer.begin() + fits, model.begin() + position));
                position += fits;
                break;
            }
            case 2: {
                const std::int64_t offset = below(size + 1);
                const std::int64_t fits = std::min(length, size - offset);
                const Status atEnd = GetParam() == StreamType::File && length && !fits
                                         ? kStatusEndOfData
                                         : kStatusOk;
                ASSERT_EQ(stream.ReadAt(buffer.data(), length, SeekMode::Start, offset, count),
                          atEnd);
                ASSERT_EQ(count, fits);
                ASSERT_TRUE(
                    std::equal(buffer.begin(), buffer.begin() + fits, model.begin() + offset));
                break;
            }
            case 3: {
                const std::int64_t newSize = below(1500);
                ASSERT_EQ(stream.SetSize(newSize),
                          Grows() ? kStatusOk : kStatusUnsupportedOperation);
                if (Grows()) {
                    model.resize(static_cast<std::size_t>(newSize), 0);
                    position = std::min(position, newSize);
                }
                break;
            }
            case 4: {
                // From itself or its clone, anywhere, overlapping or not.
                Stream& source = below(2) ? stream : *clone;
                const std::int64_t start = below(size + 1);
                const std::int64_t room = Grows() ? length : std::min(length, size - position);
                const std::int64_t copied = std::min(room, size - start);
                if (copied < room) expected = kStatusEndOfData;
                ASSERT_EQ(stream.CopyFrom(source, SeekMode::Start, start, length, count), expected);
                ASSERT_EQ(count, copied);
                const Bytes piece(model.begin() + start, model.begin() + start + copied);
                // A growing block makes room for all that was asked for.
                const std::int64_t end =
                    position + (GetParam() == StreamType::DynamicMemory ? room : copied);
                if (end > size) model.resize(static_cast<std::size_t>(end), 0);
                std::copy(piece.begin(), piece.end(), model.begin() + position);
                position += copied;
                break;
            }
            default: {
                const std::int64_t fits = Grows() ? length : std::min(length, size - position);
                if (length && !fits) expected = kStatusEndOfData;
                ASSERT_EQ(stream.Write(buffer.data(), length, count), expected);
                ASSERT_EQ(count, fits);
                if (position + fits > size) model.resize(static_cast<std::size_t>(position + fits));
                std::copy_n(buffer.begin(), fits, model.begin() + position);
                position += fits;
                break;
            }
        }
        ASSERT_EQ(stream.GetPosition(), position);
        ASSERT_EQ(stream.GetSize(), SizeOf(model));
    }
    EXPECT_EQ(Content(), model);
}

TEST_P(StreamTest, ChecksWhatItIsGiven) {
    char byte = 0;
    std::int64_t count = -1;
    EXPECT_EQ(stream_->Seek(static_cast<SeekMode>(3), 0), kStatusInvalidSeekMode);
    EXPECT_EQ(stream_->Seek(SeekMode::Position, INT64_MAX), kStatusInvalidSeekPosition);
    EXPECT_EQ(stream_->Seek(SeekMode::End, INT64_MIN), kStatusInvalidSeekPosition);
    EXPECT_EQ(stream_->Read(&byte, -1, count), kStatusInvalidArgument);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(stream_->Write(nullptr, 1, count), kStatusInvalidArgument);
    EXPECT_EQ(stream_->Write(nullptr, 0, count), kStatusOk);
    EXPECT_EQ(stream_->ReadAt(&byte, 1, SeekMode::Start, -1, count), kStatusInvalidSeekPosition);
    EXPECT_EQ(stream_->CopyFrom(*stream_, SeekMode::Start, -1, 1, count),
              kStatusInvalidSeekPosition);
    EXPECT_EQ(stream_->CopyFrom(*stream_, SeekMode::Start, -1, 0, count), kStatusOk);
    EXPECT_EQ(stream_->SetSize(-1), Grows() ? kStatusInvalidArgument : kStatusUnsupportedOperation);
    EXPECT_EQ(stream_->Flush(), kStatusOk);
    EXPECT_EQ(stream_->GetKind(), GetParam());
    EXPECT_EQ(stream_->GetPosition(), 0);
    AllocationWatch watch;
    watch.FailFrom(1);
    Status status = kStatusOk;
    EXPECT_EQ(stream_->Clone(&status), nullptr);
    EXPECT_EQ(status, kStatusInsufficientMemory);
}

TEST_P(StreamTest, ComparesRanges) {
    std::int64_t count = 0;
    ASSERT_EQ(stream_->Write("abcdefabcdef", 12, count), kStatusOk);
    DynMemStream other;
    ASSERT_EQ(other.Open(0, 0), kStatusOk);
    ASSERT_EQ(other.Write("xabd", 4, count), kStatusOk);
    EXPECT_EQ(stream_->CompareRange(2, 0, other, 1), 1);
    EXPECT_EQ(stream_->CompareRange(3, 0, other, 1), 0);
    EXPECT_EQ(other.CompareRange(3, 1, *stream_, 0), 2);
    EXPECT_EQ(stream_->CompareRange(0, 1, other, 4), 1);
    EXPECT_EQ(stream_->CompareRange(0, -5, other, 0), kStatusInvalidSeekPosition);
    EXPECT_EQ(stream_->CompareRange(6, 0, *stream_, 6), 1);
    EXPECT_EQ(stream_->GetPosition(), 12);
    EXPECT_EQ(stream_->CompareRange(4, 6, other, 1), kStatusInternalError);
    EXPECT_EQ(stream_->CompareRange(1, 0, other, 5), kStatusInvalidSeekPosition);
    EXPECT_EQ(CompareStreams(*stream_, other), 2);
    EXPECT_EQ(CompareStreams(other, *stream_), 0);
    EXPECT_EQ(CompareStreams(*stream_, *stream_), 1);
}

TEST_P(StreamTest, IsOfNoUseOnceClosed) {
    std::int64_t count = 0;
    ASSERT_EQ(stream_->Write("abc", 3, count), kStatusOk);
    const std::unique_ptr<Stream> clone = stream_->Clone();
    ASSERT_NE(clone, nullptr);
    EXPECT_EQ(stream_->Close(), kStatusOk);
    EXPECT_FALSE(clone->IsOpen());
    EXPECT_EQ(stream_->Close(), kStatusOk);
    EXPECT_EQ(stream_->Detach(), kStatusOk);
    EXPECT_FALSE(stream_->IsSameStore(*clone));
    for (Stream* stream : {stream_.get(), clone.get()}) {
        char byte = 0;
        count = 7;
        EXPECT_EQ(stream->Read(&byte, 1, count), kStatusNotInitialized);
        EXPECT_EQ(count, 0);
        EXPECT_EQ(stream->Write("x", 1, count), kStatusNotInitialized);
        EXPECT_EQ(stream->ReadAt(&byte, 1, SeekMode::Start, 0, count), kStatusNotInitialized);
        EXPECT_EQ(stream->CopyFrom(*clone, SeekMode::Start, 0, 1, count), kStatusNotInitialized);
        EXPECT_EQ(stream->Seek(SeekMode::Start, 0), kStatusNotInitialized);
        EXPECT_EQ(stream->SetSize(1), kStatusNotInitialized);
        EXPECT_EQ(stream->Flush(), kStatusNotInitialized);
        EXPECT_EQ(stream->SetAccess(1), kStatusNotInitialized);
        EXPECT_EQ(stream->Rewind(), kStatusNotInitialized);
        EXPECT_EQ(stream->CompareRange(0, 0, *clone, 0), kStatusNotInitialized);
        Status status = kStatusOk;
        EXPECT_EQ(stream->Clone(&status), nullptr);
        EXPECT_EQ(status, kStatusNotInitialized);
        EXPECT_EQ(stream->GetSize() + stream->GetAllocated() + stream->GetPosition(), 0);
        EXPECT_EQ(stream->GetData(), nullptr);
    }
}

}  // namespace
