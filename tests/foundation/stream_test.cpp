// What holds for every stream: one script over three of them against a text of bytes.

#include "foundation/stream.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <string>

#include "foundation/dyn_mem_stream.h"
#include "foundation/file_stream.h"
#include "foundation/mem_stream.h"
#include "tests/support/test_profile.h"

namespace {

using namespace AUX;

constexpr std::int64_t kFixedSize = 700;  // Of the stream that cannot grow.

std::int64_t SizeOf(const std::string& bytes) { return static_cast<std::int64_t>(bytes.size()); }

class StreamTest : public ::testing::TestWithParam<StreamType> {
protected:
    void SetUp() override {
        Status status = kStatusOk;
        if (GetParam() == StreamType::Memory) {
            stream_ = &memory_;
            status = memory_.Open(fixed_.data(), kFixedSize, 3);
        } else if (GetParam() == StreamType::DynamicMemory) {
            stream_ = &growing_;
            status = growing_.Open(0, -2);
        } else {
            stream_ = &file_;
            status = file_.Open(profile_.Path(TEXT("a.bin")).c_str(), CREATE_ALWAYS, 3, 1, 128);
        }
        ASSERT_EQ(status, kStatusOk);
    }
    [[nodiscard]] bool Grows() const { return GetParam() != StreamType::Memory; }

    test_support::TestProfile profile_;
    std::string fixed_ = std::string(kFixedSize, '\0');
    MemStream memory_;
    DynMemStream growing_;
    FileStream file_;
    Stream* stream_ = nullptr;
};

INSTANTIATE_TEST_SUITE_P(Families, StreamTest,
                         ::testing::Values(StreamType::Memory, StreamType::DynamicMemory,
                                           StreamType::File));

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
    const std::unique_ptr<Stream> clone = stream.Clone();
    ASSERT_NE(clone, nullptr);
    std::string model = Grows() ? std::string() : fixed_;
    std::int64_t position = 0;
    const auto put = [&](const std::string& bytes, std::int64_t end) {
        model.resize(static_cast<std::size_t>(std::max(SizeOf(model), end)));
        std::copy(bytes.begin(), bytes.end(), model.begin() + position);
        position += SizeOf(bytes);
    };
    for (int step = 0; step < 3000; ++step) {
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
        switch (below(7)) {
            case 0: {
                const SeekMode mode = static_cast<SeekMode>(below(3));
                const std::int64_t bases[] = {0, position, size};
                const std::int64_t target =
                    bases[static_cast<int>(mode)] + below(2 * size + 3) - size - 1;
                const bool isInside = target >= 0 && target <= size;
                status = stream.Seek(mode, target - bases[static_cast<int>(mode)]);
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
                if (GetParam() == StreamType::File && length && !expectedCount) {
                    expected = kStatusEndOfData;
                }
                status = stream.ReadAt(buffer.data(), length, SeekMode::Start, place, count);
                ASSERT_EQ(part(buffer, 0, count), part(model, place, count));
                break;
            case 3:
                status = stream.SetSize(place + length);
                if (!Grows()) expected = kStatusUnsupportedOperation;
                if (Grows()) model.resize(static_cast<std::size_t>(place + length));
                position = std::min(position, SizeOf(model));
                break;
            case 4: {
                // From itself or its clone, anywhere, overlapping or not. A growing block makes
                // room for all that was asked for.
                expectedCount = std::min(room, size - place);
                if (expectedCount < room) expected = kStatusEndOfData;
                status = stream.CopyFrom(below(2) ? stream : *clone, SeekMode::Start, place, length,
                                         count);
                const bool keepsRoom = GetParam() == StreamType::DynamicMemory;
                put(part(model, place, count), position + (keepsRoom ? room : count));
                break;
            }
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
    EXPECT_EQ(stream_->GetPosition(), 0);
}

TEST_P(StreamTest, ComparesRanges) {
    std::int64_t count = 0;
    ASSERT_EQ(stream_->Write("abcdefabcdef", 12, count), kStatusOk);
    char bytes[] = "xabd";
    MemStream other;
    ASSERT_EQ(other.Open(bytes, 4, kAccessRead), kStatusOk);
    const struct {
        Stream& own;
        Stream& other;
        std::int64_t length;
        std::int64_t ownOffset;
        std::int64_t otherOffset;
        Status result;
    } kCases[] = {{*stream_, other, 2, 0, 1, 1},
                  {*stream_, other, 3, 0, 1, 0},
                  {other, *stream_, 3, 1, 0, 2},
                  {*stream_, other, 0, 1, 4, 1},
                  {*stream_, other, 0, -5, 0, kStatusInvalidSeekPosition},
                  {*stream_, other, 1, 0, 5, kStatusInvalidSeekPosition},
                  {*stream_, other, 4, 6, 1, kStatusInternalError},
                  {*stream_, *stream_, 6, 0, 6, 1}};
    for (const auto& c : kCases) {
        EXPECT_EQ(c.own.CompareRange(c.length, c.ownOffset, c.other, c.otherOffset), c.result);
    }
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

}  // namespace
