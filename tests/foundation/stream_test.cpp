#include "foundation/stream.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <string>

#include "foundation/dyn_mem_stream.h"
#include "foundation/file_stream.h"
#include "foundation/mem_stream.h"
#include "foundation/temp_mapped_file_stream.h"
#include "tests/support/test_profile.h"

namespace {

using namespace AUX;

constexpr std::int64_t kFixedSize = 700;  // Of the stream that cannot grow.

std::int64_t SizeOf(const std::string& bytes) { return static_cast<std::int64_t>(bytes.size()); }

enum class Family { Memory, DynamicMemory, File, MappedFile, TempMappedFile };

class StreamTest : public ::testing::TestWithParam<Family> {
protected:
    void SetUp() override {
        const platform::WideString path = profile_.Path(TEXT("a.bin"));
        Status status = kStatusOk;
        switch (GetParam()) {
            case Family::Memory:
                stream_ = &memory_;
                status = memory_.Open(fixed_.data(), kFixedSize, 3);
                break;
            case Family::DynamicMemory:
                stream_ = &growing_;
                status = growing_.Open(0, -2);
                break;
            case Family::File:
                stream_ = &file_;
                status = file_.Open(path.c_str(), CREATE_ALWAYS, 3, 1, 128);
                break;
            case Family::MappedFile:
                stream_ = &mapped_;
                status = mapped_.Open(path.c_str(), CREATE_ALWAYS, 3, 1, 128);
                break;
            case Family::TempMappedFile:
                stream_ = &temporary_;
                status = temporary_.OpenTemp(TEXT("qvd"), nullptr, true);
        }
        ASSERT_EQ(status, kStatusOk);
    }
    [[nodiscard]] bool Grows() const { return GetParam() != Family::Memory; }
    [[nodiscard]] bool IsMapped() const { return GetParam() >= Family::MappedFile; }
    [[nodiscard]] bool KeepsRoom() const {
        return GetParam() == Family::DynamicMemory || IsMapped();
    }

    test_support::TestProfile profile_;
    std::string fixed_ = std::string(kFixedSize, '\0');
    MemStream memory_;
    DynMemStream growing_;
    FileStream file_;
    MappedFileStream mapped_;
    TempMappedFileStream temporary_;
    Stream* stream_ = nullptr;
};

INSTANTIATE_TEST_SUITE_P(Families, StreamTest,
                         ::testing::Values(Family::Memory, Family::DynamicMemory, Family::File,
                                           Family::MappedFile, Family::TempMappedFile));

TEST_P(StreamTest, AgreesWithATextOfBytes) {
    constexpr unsigned kSeed = 65;
    SCOPED_TRACE(kSeed);
    std::mt19937 random(kSeed);
    const auto below = [&random](std::int64_t limit) {
        return static_cast<std::int64_t>(random() % static_cast<std::uint64_t>(limit));
    };
    const auto part = [](const std::string& text, std::int64_t start, std::int64_t length) {
        return text.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(length));
    };
    Stream& stream = *stream_;
    std::unique_ptr<Stream> clone = stream.Clone();
    ASSERT_NE(clone, nullptr);
    // Of a mapped file far enough to need several views.
    const std::int64_t farthest = IsMapped() ? 400'000 : 5'000;
    std::string model = Grows() ? std::string() : fixed_;
    std::int64_t position = 0;
    const auto put = [&](const std::string& bytes, std::int64_t end) {
        model.resize(static_cast<std::size_t>(std::max(SizeOf(model), end)));
        std::copy(bytes.begin(), bytes.end(), model.begin() + position);
        position += SizeOf(bytes);
    };
    for (int step = 0; step < 100'000; ++step) {
        SCOPED_TRACE(step);
        const std::int64_t size = SizeOf(model);
        const std::int64_t length = below(10) ? below(300) : below(17);
        const std::int64_t place = below(size + 1);
        const std::int64_t room = Grows() ? length : std::min(length, size - position);
        std::string buffer(static_cast<std::size_t>(length), static_cast<char>(below(256)));
        std::int64_t count = 0;
        std::int64_t expectedCount = 0;
        Status expected = kStatusOk;
        Status status = kStatusOk;
        switch (below(9)) {
            case 0: {
                const std::int64_t mode = below(3);
                const std::int64_t target = below(size + 3) - 1;
                const std::int64_t bases[] = {0, position, size};
                status = stream.Seek(static_cast<SeekMode>(mode), target - bases[mode]);
                const bool isInside = target >= 0 && target <= size;
                if (!isInside) expected = kStatusInvalidSeekPosition;
                if (isInside) position = target;
                break;
            }
            case 1:
                expectedCount = std::min(length, size - position);
                if (length && !expectedCount) expected = kStatusEndOfData;
                status = stream.Read(buffer.data(), length, count);
                ASSERT_EQ(part(buffer, 0, count), part(model, position, count));
                position += count;
                break;
            case 2:
                expectedCount = std::min(length, size - place);
                if (GetParam() >= Family::File && length && !expectedCount) {
                    expected = kStatusEndOfData;
                }
                status = stream.ReadAt(buffer.data(), length, SeekMode::Start, place, count);
                ASSERT_EQ(part(buffer, 0, count), part(model, place, count));
                break;
            case 3: {
                // Up by little, or anywhere.
                const std::int64_t newSize = below(20) ? size + length : below(farthest);
                status = stream.SetSize(newSize);
                if (!Grows()) expected = kStatusUnsupportedOperation;
                if (Grows()) model.resize(static_cast<std::size_t>(newSize));
                position = std::min(position, SizeOf(model));
                break;
            }
            case 4: {
                // From itself or its clone, anywhere, overlapping or not. A growing block makes
                // room for all that was asked for.
                expectedCount = std::min(room, size - place);
                if (expectedCount < room) expected = kStatusEndOfData;
                status = stream.CopyFrom(below(2) ? stream : *clone, SeekMode::Start, place, length,
                                         count);
                put(part(model, place, count), position + (KeepsRoom() ? room : count));
                break;
            }
            case 5:
                if (below(100)) break;
                status = stream.Compact();
                EXPECT_EQ(stream.GetAllocated() > std::max<std::int64_t>(size, 4), false);
                break;
            case 6:
                if (below(4) == 0) clone = stream.Clone();
                ASSERT_NE(clone, nullptr);
                ASSERT_EQ(clone->Seek(SeekMode::Start, place), kStatusOk);
                ASSERT_EQ(clone->Read(buffer.data(), length, count),
                          length && place == size ? kStatusEndOfData : kStatusOk);
                ASSERT_EQ(part(buffer, 0, count), part(model, place, length));
                expectedCount = count;
                break;
            default:
                expectedCount = room;
                if (length && !room) expected = kStatusEndOfData;
                status = stream.Write(buffer.data(), length, count);
                put(part(buffer, 0, count), position + count);
                break;
        }
        ASSERT_EQ(status, expected);
        ASSERT_EQ(count, expectedCount);
        ASSERT_EQ(stream.GetPosition(), position);
        ASSERT_EQ(stream.GetSize(), SizeOf(model));
    }
    MemStream whole;
    ASSERT_EQ(whole.Open(model.data(), SizeOf(model), kAccessRead), kStatusOk);
    EXPECT_EQ(CompareStreams(stream, whole), 1);
    if (GetParam() != Family::MappedFile) return;
    EXPECT_EQ(stream.Close(), kStatusOk);
    EXPECT_TRUE(test_support::ReadWholeFile(profile_.Path(TEXT("a.bin"))) == model);
}

TEST_P(StreamTest, ChecksWhatItIsGiven) {
    char byte = 0;
    std::int64_t count = -1;
    EXPECT_EQ(stream_->Seek(static_cast<SeekMode>(3), 0), kStatusInvalidSeekMode);
    EXPECT_EQ(stream_->Seek(SeekMode::Position, INT64_MAX), kStatusInvalidSeekPosition);
    EXPECT_EQ(stream_->Seek(SeekMode::End, INT64_MIN), kStatusInvalidSeekPosition);
    EXPECT_EQ(stream_->Read(&byte, -1, count), kStatusInvalidArgument);
    EXPECT_EQ(stream_->Write(nullptr, 1, count), kStatusInvalidArgument);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(stream_->ReadAt(&byte, 1, SeekMode::Start, -1, count), kStatusInvalidSeekPosition);
    EXPECT_EQ(stream_->CopyFrom(*stream_, SeekMode::End, 1, 1, count), kStatusInvalidSeekPosition);
    EXPECT_EQ(stream_->CopyFrom(*stream_, SeekMode::End, 1, 0, count), kStatusOk);
    EXPECT_EQ(stream_->SetSize(-1), Grows() ? kStatusInvalidArgument : kStatusUnsupportedOperation);
}

TEST_P(StreamTest, ComparesRanges) {
    std::int64_t count = 0;
    ASSERT_EQ(stream_->Write("abcdefabcdef", 12, count), kStatusOk);
    char bytes[] = "xabd";
    MemStream other;
    ASSERT_EQ(other.Open(bytes, 4, kAccessRead), kStatusOk);
    EXPECT_EQ(stream_->CompareRange(2, 0, other, 1), 1);
    EXPECT_EQ(stream_->CompareRange(3, 0, other, 1), 0);
    EXPECT_EQ(other.CompareRange(3, 1, *stream_, 0), 2);
    EXPECT_EQ(stream_->CompareRange(0, 1, other, 4), 1);
    EXPECT_EQ(stream_->CompareRange(0, -5, other, 0), kStatusInvalidSeekPosition);
    EXPECT_EQ(stream_->CompareRange(1, 0, other, 5), kStatusInvalidSeekPosition);
    EXPECT_EQ(stream_->CompareRange(4, 6, other, 1), kStatusInternalError);
    EXPECT_EQ(stream_->CompareRange(6, 0, *stream_, 6), 1);
    EXPECT_EQ(CompareStreams(*stream_, other), 2);
    EXPECT_EQ(CompareStreams(other, *stream_), 0);
}

TEST_P(StreamTest, IsOfNoUseOnceClosed) {
    std::int64_t count = 0;
    ASSERT_EQ(stream_->Write("abc", 3, count), kStatusOk);
    const std::unique_ptr<Stream> clone = stream_->Clone();
    ASSERT_NE(clone, nullptr);
    EXPECT_EQ(stream_->Close(), kStatusOk);
    EXPECT_EQ(stream_->Close(), kStatusOk);
    EXPECT_EQ(stream_->Detach(), kStatusOk);
    EXPECT_FALSE(stream_->IsSameStore(*clone));
    for (Stream* stream : {stream_, clone.get()}) {
        char byte = 0;
        Status cloned = kStatusOk;
        EXPECT_EQ(stream->Clone(&cloned), nullptr);
        // Also what the family does not support at all.
        const Status results[] = {stream->Read(&byte, 1, count = 7),
                                  stream->Write("x", 1, count),
                                  stream->ReadAt(&byte, 1, SeekMode::Start, 0, count),
                                  stream->CopyFrom(*clone, SeekMode::Start, 0, 1, count),
                                  stream->Seek(SeekMode::Start, 0),
                                  stream->SetSize(1),
                                  stream->Compact(),
                                  stream->ReleaseView(),
                                  stream->Flush(),
                                  stream->SetAccess(1),
                                  stream->Rewind(),
                                  stream->CompareRange(0, 0, *clone, 0),
                                  cloned};
        for (const Status result : results) {
            EXPECT_EQ(result, kStatusNotInitialized) << &result - results;
        }
        EXPECT_EQ(count + stream->GetSize() + stream->GetAllocated() + stream->GetPosition(), 0);
        EXPECT_EQ(stream->GetAccess(), 0u);
        EXPECT_EQ(stream->GetData(), nullptr);
    }
}

std::string ContentOf(Stream& stream) {
    return {static_cast<const char*>(stream.GetData()), static_cast<std::size_t>(stream.GetSize())};
}

TEST(DynMemStream, GrowsByItsRule) {
    const struct {
        std::int64_t initialSize;
        std::int64_t growth;
        std::int64_t firstAllocated;
        std::int64_t written;
        std::int64_t allocated;
    } kCases[] = {{0, -2, 4096, 4096, 4096}, {0, -2, 4096, 5000, 8192},  {0, -2, 4096, 9000, 12288},
                  {8192, 0, 8192, 1, 12288}, {8192, -9, 8192, 1, 10240}, {0, 100, 100, 101, 200},
                  {150, 100, 200, 51, 300},  {8192, -1, 8192, 1, 16384}};
    for (const auto& c : kCases) {
        SCOPED_TRACE(&c - kCases);
        DynMemStream stream;
        ASSERT_EQ(stream.Open(c.initialSize, c.growth), kStatusOk);
        EXPECT_EQ(stream.GetAllocated(), c.firstAllocated);
        const std::string bytes(static_cast<std::size_t>(c.written), 'x');
        std::int64_t count = 0;
        ASSERT_EQ(stream.Seek(SeekMode::End, 0), kStatusOk);
        ASSERT_EQ(stream.Write(bytes.data(), c.written, count), kStatusOk);
        EXPECT_EQ(stream.GetAllocated(), c.allocated);
    }
}

TEST(DynMemStream, RefusesWhatNoMemoryHolds) {
    DynMemStream stream;
    std::int64_t count = 0;
    EXPECT_EQ(stream.Open(-1, 0), kStatusInvalidArgument);
    EXPECT_EQ(stream.Open(0, INT64_MAX), kStatusInsufficientMemory);
    EXPECT_FALSE(stream.IsOpen());
    ASSERT_EQ(stream.Open(0, -2), kStatusOk);
    ASSERT_EQ(stream.Write("abc", 3, count), kStatusOk);
    for (const std::int64_t size : {INT64_MAX, INT64_MAX - 4096, INT64_MAX / 2 + 2}) {
        EXPECT_EQ(stream.SetSize(size), kStatusInsufficientMemory);
        EXPECT_EQ(stream.Write("x", size, count), kStatusInsufficientMemory);
        EXPECT_EQ(stream.CopyFrom(stream, SeekMode::Start, 0, size, count),
                  kStatusInsufficientMemory);
    }
    EXPECT_EQ(ContentOf(stream), "abc");
}

TEST(DynMemStream, WritesItsOwnBytesAndZeros) {
    DynMemStream stream;
    std::int64_t count = 0;
    ASSERT_EQ(stream.Open(0, 0), kStatusOk);
    ASSERT_EQ(stream.Write(std::string(4000, 'x').data(), 4000, count), kStatusOk);
    ASSERT_EQ(stream.Write(stream.GetData(), 4000, count), kStatusOk);  // The block moves.
    EXPECT_EQ(ContentOf(stream), std::string(8000, 'x'));
    const std::unique_ptr<Stream> clone = stream.Clone();
    ASSERT_EQ(stream.Seek(SeekMode::Start, 3), kStatusOk);
    ASSERT_EQ(clone->SetSize(1), kStatusOk);
    ASSERT_EQ(stream.Write("!", 1, count), kStatusOk);  // Behind what the clone cut off.
    EXPECT_EQ(ContentOf(stream), std::string("x\0\0!", 4));
    char few[] = {'a', 'b'};
    MemStream source;
    ASSERT_EQ(source.Open(few, 2, kAccessRead), kStatusOk);
    ASSERT_EQ(stream.SetSize(0), kStatusOk);
    EXPECT_EQ(stream.CopyFrom(source, SeekMode::Start, 0, 4, count), kStatusEndOfData);
    EXPECT_EQ(ContentOf(stream), std::string("ab\0\0", 4));
    EXPECT_EQ(stream.Compact(), kStatusOk);
    EXPECT_EQ(stream.GetAllocated(), 4);
    EXPECT_EQ(stream.SetAccess(kAccessRead | 8), kStatusOk);
    EXPECT_EQ(stream.GetAccess(), kAccessRead);
    EXPECT_EQ(stream.Write("h", 1, count), kStatusOk);
    EXPECT_EQ(stream.CopyFrom(stream, SeekMode::Start, 0, 1, count), kStatusInvalidAccessMode);
}

TEST(MemStream, KeepsToItsAccess) {
    char bytes[] = "abcd";
    char buffer[2] = {};
    std::int64_t count = 0;
    MemStream stream;
    MemStream source;
    ASSERT_EQ(source.Open(buffer, 2, kAccessRead), kStatusOk);
    for (const std::uint32_t access : {kAccessRead, kAccessWrite}) {
        const Status read = access == kAccessRead ? kStatusOk : kStatusInvalidAccessMode;
        const Status write = access == kAccessWrite ? kStatusOk : kStatusInvalidAccessMode;
        ASSERT_EQ(stream.Open(bytes, 4, access), kStatusOk);
        EXPECT_EQ(stream.Read(buffer, 1, count), read);
        EXPECT_EQ(stream.ReadAt(buffer, 1, SeekMode::Start, 0, count), read);
        EXPECT_EQ(stream.Write("x", 1, count), write);
        EXPECT_EQ(stream.CopyFrom(source, SeekMode::Start, 0, 1, count), write);
    }
    EXPECT_EQ(stream.Open(bytes, 4, 0), static_cast<Status>(0x8202000A));
    EXPECT_FALSE(stream.IsOpen());
    EXPECT_EQ(stream.Open(nullptr, 4, 1), kStatusInvalidArgument);
    EXPECT_EQ(stream.Open(bytes, -1, 1), kStatusInvalidArgument);
}

}  // namespace
