#include "cab/foreign_stream.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <string>

#include "cab/com_stream.h"
#include "cab/data_stream.h"
#include "foundation/dyn_mem_stream.h"
#include "platform/com_object.h"
#include "tests/support/fail_each_allocation.h"

namespace {

using namespace AUX;
using platform::ComPtr;

ComPtr<IStream> Make(std::string_view bytes) {
    std::unique_ptr<DynMemStream> stream(new (std::nothrow) DynMemStream);
    std::int64_t count = 0;
    EXPECT_EQ(stream->Open(0, 0), kStatusOk);
    EXPECT_EQ(stream->Write(bytes.data(), static_cast<std::int64_t>(bytes.size()), count),
              kStatusOk);
    return CAB::MakeComStream(std::move(stream));
}

// The stream of a client, which gives few bytes at a time and fails where a test wants it to.
class SlowStream final : public platform::ComObject<IStream> {
public:
    explicit SlowStream(std::string_view bytes) : own_(Make(bytes)) {}

    HRESULT STDMETHODCALLTYPE Read(void* to, ULONG size, ULONG* done) noexcept override {
        return calls_++ == failing ? E_ACCESSDENIED : own_->Read(to, std::min(size, kMost), done);
    }
    HRESULT STDMETHODCALLTYPE Write(const void* from, ULONG size, ULONG* done) noexcept override {
        return calls_++ == failing ? E_ACCESSDENIED
                                   : own_->Write(from, std::min(size, kMost), done);
    }
    HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER by, DWORD from,
                                   ULARGE_INTEGER* place) noexcept override {
        return own_->Seek(by, from, place);
    }
    HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER size) noexcept override {
        return own_->SetSize(size);
    }
    HRESULT STDMETHODCALLTYPE Stat(STATSTG* facts, DWORD flags) noexcept override {
        return hasFacts ? own_->Stat(facts, flags) : E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE CopyTo(IStream*, ULARGE_INTEGER, ULARGE_INTEGER*,
                                     ULARGE_INTEGER*) noexcept override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Commit(DWORD) noexcept override { return S_OK; }
    HRESULT STDMETHODCALLTYPE Revert() noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) noexcept override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER,
                                           DWORD) noexcept override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Clone(IStream**) noexcept override { return E_NOTIMPL; }

    static constexpr ULONG kMost = 3;
    bool hasFacts = true;
    int failing = -1;  // the call that fails

private:
    const ComPtr<IStream> own_;
    int calls_ = 0;
};

std::string Content(IStream& stream) {
    char bytes[1000];
    ULONG done = 0;
    EXPECT_EQ(stream.Seek({}, STREAM_SEEK_SET, nullptr), S_OK);
    std::string content;
    while (SUCCEEDED(stream.Read(bytes, sizeof bytes, &done)) && done > 0) {
        content.append(bytes, done);
    }
    return content;
}

TEST(ComStream, IsTheStreamThatItWasMadeOf) {
    const ComPtr<IStream> stream = Make("some bytes"), other = Make("");
    const auto seek = [&](LONGLONG by, DWORD from) {
        LARGE_INTEGER move;
        move.QuadPart = by;
        return stream->Seek(move, from, nullptr);
    };
    const auto bytes = [](ULONGLONG count) {
        ULARGE_INTEGER value;
        value.QuadPart = count;
        return value;
    };
    EXPECT_EQ(seek(5, STREAM_SEEK_SET), S_OK);
    ComPtr<IStream> clone;
    ASSERT_EQ(stream->Clone(clone.Put()), S_OK);
    ULARGE_INTEGER read = {}, written = {};
    EXPECT_EQ(stream->CopyTo(other.Get(), bytes(3), &read, &written), S_OK);
    EXPECT_TRUE(read.QuadPart == 3 && written.QuadPart == 3);
    EXPECT_EQ(clone->CopyTo(other.Get(), bytes(~0ull), nullptr, nullptr), S_OK);
    EXPECT_EQ(Content(*other.Get()), "bytbytes") << "the clone stands where the first one stood";
    EXPECT_EQ(stream->CopyTo(nullptr, bytes(1), nullptr, nullptr), STG_E_INVALIDPOINTER);
    // A target that takes less than it was given ends the copy, one that fails fails it.
    const auto slow = platform::MakeObject<SlowStream>("");
    EXPECT_EQ(seek(0, STREAM_SEEK_SET), S_OK);
    EXPECT_EQ(stream->CopyTo(slow.Get(), bytes(9), &read, &written), S_OK);
    EXPECT_TRUE(read.QuadPart == 9 && written.QuadPart == SlowStream::kMost);
    const auto failing = platform::MakeObject<SlowStream>("");
    failing->failing = 0;
    EXPECT_EQ(seek(0, STREAM_SEEK_SET), S_OK);
    EXPECT_EQ(stream->CopyTo(failing.Get(), bytes(9), nullptr, nullptr), E_ACCESSDENIED);

    EXPECT_EQ(stream->SetSize(bytes(4)), S_OK);
    EXPECT_EQ(Content(*stream.Get()), "some");
    STATSTG facts;
    EXPECT_EQ(stream->Stat(&facts, 1), S_OK);
    EXPECT_TRUE(facts.cbSize.QuadPart == 4 && facts.type == STGTY_STREAM);
    EXPECT_EQ(facts.grfMode, static_cast<DWORD>(STGM_READWRITE));
    EXPECT_TRUE(SUCCEEDED(stream->Commit(0)) && SUCCEEDED(stream->Revert()));
    EXPECT_EQ(seek(-1, STREAM_SEEK_SET), STG_E_INVALIDFUNCTION);
    EXPECT_EQ(seek(0, 3), STG_E_INVALIDFUNCTION);
    EXPECT_EQ(stream->LockRegion(bytes(0), bytes(1), 0), STG_E_INVALIDFUNCTION);
    EXPECT_EQ(stream->UnlockRegion(bytes(0), bytes(1), 0), STG_E_INVALIDFUNCTION);
    EXPECT_EQ(stream->Stat(nullptr, 0), STG_E_INVALIDPOINTER);
    EXPECT_EQ(stream->Clone(nullptr), STG_E_INVALIDPOINTER);
    EXPECT_FALSE(CAB::MakeComStream(nullptr));
}

// Random operations on two clones do what the same ones do on a text.
TEST(ForeignStream, IsTheClientsStream) {
    constexpr unsigned kSeed = 3;
    SCOPED_TRACE(kSeed);
    std::mt19937 random(kSeed);
    const auto upTo = [&](std::size_t count) { return static_cast<std::size_t>(random() % count); };
    for (int run = 0; run < 200; ++run) {
        std::string model = "some bytes that were there";
        const auto client = platform::MakeObject<SlowStream>(model);
        client->hasFacts = upTo(2) == 0;
        std::unique_ptr<Stream> streams[2];
        streams[0] = CAB::MakeForeignStream(client.Get(), kAccessRead | kAccessWrite);
        ASSERT_TRUE(streams[0]);
        streams[1] = streams[0]->Clone();
        ASSERT_TRUE(streams[1]);
        std::size_t places[2] = {};
        for (int step = 0; step < 40; ++step) {
            const std::size_t which = upTo(2);
            Stream& stream = *streams[which];
            std::size_t& place = places[which];
            std::int64_t count = 0;
            char bytes[30];
            const std::size_t size = upTo(sizeof bytes);
            switch (upTo(4)) {
                case 0: {
                    const Status status =
                        stream.Read(bytes, static_cast<std::int64_t>(size), count);
                    const std::string wanted =
                        place < model.size() ? model.substr(place, size) : "";
                    ASSERT_EQ(std::string(bytes, static_cast<std::size_t>(count)), wanted);
                    ASSERT_EQ(status, wanted.empty() && size > 0 ? kStatusEndOfData : kStatusOk);
                    place += wanted.size();
                    break;
                }
                case 1:
                    std::fill_n(bytes, size, static_cast<char>('a' + step % 26));
                    ASSERT_EQ(stream.Write(bytes, static_cast<std::int64_t>(size), count),
                              kStatusOk);
                    ASSERT_EQ(count, static_cast<std::int64_t>(size));
                    if (size > 0 && model.size() < place + size) model.resize(place + size);
                    model.replace(place, size, bytes, size);
                    place += size;
                    break;
                case 2:
                    place = upTo(model.size() + 1);
                    ASSERT_EQ(stream.Seek(SeekMode::Start, static_cast<std::int64_t>(place)),
                              kStatusOk);
                    break;
                default: {
                    // Inside one stream, also where the ranges overlap.
                    const std::size_t from = upTo(model.size() + 1);
                    const std::string moved = model.substr(from, size);
                    const Status status = stream.CopyFrom(*streams[1 - which], SeekMode::Start,
                                                          static_cast<std::int64_t>(from),
                                                          static_cast<std::int64_t>(size), count);
                    places[1 - which] = static_cast<std::size_t>(streams[1 - which]->GetPosition());
                    ASSERT_EQ(count, static_cast<std::int64_t>(moved.size()));
                    ASSERT_EQ(status, moved.size() < size ? kStatusEndOfData : kStatusOk);
                    if (model.size() < place + moved.size()) model.resize(place + moved.size());
                    model.replace(place, moved.size(), moved);
                    place += moved.size();
                }
            }
            ASSERT_EQ(stream.GetPosition(), static_cast<std::int64_t>(place)) << run << ' ' << step;
            ASSERT_EQ(stream.GetSize(), static_cast<std::int64_t>(model.size()));
        }
        ASSERT_EQ(Content(*client.Get()), model);
    }
}

TEST(ForeignStream, TellsWhatTheClientsStreamRefuses) {
    std::int64_t count = 0;
    char bytes[20];
    const auto reading = platform::MakeObject<SlowStream>("some bytes");
    reading->failing = 1;
    const auto source = CAB::MakeForeignStream(reading.Get(), kAccessRead);
    ASSERT_TRUE(source);
    EXPECT_EQ(source->Write(bytes, 1, count), kStatusInvalidAccessMode);
    EXPECT_EQ(source->SetSize(1), kStatusInvalidAccessMode);
    EXPECT_EQ(source->Read(bytes, 10, count), E_ACCESSDENIED);
    EXPECT_EQ(count, 3) << "what came before it";
    EXPECT_EQ(source->Read(bytes, 20, count), kStatusOk) << "and what comes behind it";
    EXPECT_EQ(std::string(bytes, static_cast<std::size_t>(count)), "e bytes");
    const auto writing = platform::MakeObject<SlowStream>("");
    writing->failing = 1;
    const auto target = CAB::MakeForeignStream(writing.Get(), kAccessWrite);
    ASSERT_TRUE(target);
    EXPECT_EQ(target->Read(bytes, 1, count), kStatusInvalidAccessMode);
    EXPECT_EQ(target->Write("abcdef", 6, count), E_ACCESSDENIED);
    EXPECT_EQ(count, 3);
    EXPECT_EQ(target->GetSize(), 3);
    EXPECT_FALSE(CAB::MakeForeignStream(nullptr, kAccessRead));
}

TEST(ForeignStream, CopiesWholeOrNotAtAllWithoutMemory) {
    const auto client = platform::MakeObject<SlowStream>("some bytes");
    EXPECT_GT(test_support::FailEachAllocation([&](auto hasFailed) {
                  const auto foreign = CAB::MakeForeignStream(client.Get(), kAccessRead);
                  std::unique_ptr<Stream> copy;
                  const Status status =
                      foreign ? CAB::CopyWhole(*foreign, copy) : kStatusInsufficientMemory;
                  EXPECT_EQ(status, hasFailed() ? kStatusInsufficientMemory : kStatusOk);
                  EXPECT_EQ(static_cast<bool>(copy), !hasFailed());
              }),
              2u);
}

}  // namespace
