// The streams beside what they could be replaced by: a vector of bytes that is appended to and
// copied from, and a file's positioned reads and writes. Lengths are not known when compiling, on
// neither side. A table at the end gives the times by the peer's.

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

#include "bench/ratio_table.h"
#include "foundation/dyn_mem_stream.h"
#include "foundation/mapped_file_stream.h"
#include "foundation/wstring.h"

namespace {

using bench::RatioTable;

constexpr std::int64_t kTotal = 1 << 20;    ///< Bytes moved in one iteration.
constexpr std::int64_t kHalf = kTotal / 2;  ///< What grows no larger stays in the process's heap.
constexpr std::size_t kLargest = 4096;

/// Where bytes come from or go to. Half a page off the places where blocks begin: a processor
/// hesitates to load from a place as far into its page as one just stored to.
class Buffer {
public:
    template <class Byte>
    [[nodiscard]] Byte* As() {
        return reinterpret_cast<Byte*>(room_ + kLargest / 2);
    }

private:
    alignas(kLargest) char room_[2 * kLargest] = {};
};

std::int64_t Unknown(std::int64_t length) {
    benchmark::DoNotOptimize(length);
    return length;
}

template <std::int64_t length, std::int64_t total>
void WriteStream(benchmark::State& state) {
    Buffer buffer;
    const char* const bytes = buffer.As<const char>();
    const std::int64_t unknown = Unknown(length);
    for (auto _ : state) {
        AUX::DynMemStream stream;
        if (stream.Open(0, -2)) return state.SkipWithError("cannot open");
        for (std::int64_t done = 0; done < total; done += length) {
            std::int64_t count = 0;
            if (stream.Write(bytes, unknown, count)) return state.SkipWithError("cannot write");
        }
        benchmark::DoNotOptimize(stream.GetData());
        benchmark::ClobberMemory();
    }
}
template <std::int64_t length, std::int64_t total>
void WriteVector(benchmark::State& state) {
    Buffer buffer;
    const std::byte* const bytes = buffer.As<const std::byte>();
    const std::int64_t unknown = Unknown(length);
    for (auto _ : state) {
        std::vector<std::byte> vector;
        for (std::int64_t done = 0; done < total; done += length) {
            vector.insert(vector.end(), bytes, bytes + unknown);
        }
        benchmark::DoNotOptimize(vector.data());
        benchmark::ClobberMemory();
    }
}

template <std::int64_t length>
void ReadStream(benchmark::State& state) {
    Buffer buffer;
    char* const bytes = buffer.As<char>();
    const std::int64_t unknown = Unknown(length);
    AUX::DynMemStream stream;
    if (stream.Open(kTotal, -2)) return state.SkipWithError("cannot open");
    for (auto _ : state) {
        (void)stream.Rewind();
        for (std::int64_t done = 0; done < kTotal; done += length) {
            std::int64_t count = 0;
            if (stream.Read(bytes, unknown, count)) return state.SkipWithError("cannot read");
            benchmark::DoNotOptimize(bytes);
        }
    }
}
template <std::int64_t length>
void ReadVector(benchmark::State& state) {
    Buffer buffer;
    std::byte* const bytes = buffer.As<std::byte>();
    const std::int64_t unknown = Unknown(length);
    const std::vector<std::byte> vector(kTotal);
    for (auto _ : state) {
        std::int64_t position = 0;
        for (std::int64_t done = 0; done < kTotal; done += length) {
            const std::int64_t count = std::min(unknown, std::ssize(vector) - position);
            std::copy_n(vector.begin() + position, count, bytes);
            position += count;
            benchmark::DoNotOptimize(bytes);
        }
    }
}

/// A file of kTotal bytes, removed on destruction.
class File {
public:
    File() : path_(std::filesystem::temp_directory_path() / "streams_bench.tmp") {
        descriptor_ = open(path_.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
        if (descriptor_ < 0 || ftruncate(descriptor_, kTotal) != 0) std::abort();
        const std::vector<char> content(kTotal, 'x');
        if (pwrite(descriptor_, content.data(), kTotal, 0) != kTotal) std::abort();
    }
    ~File() {
        close(descriptor_);
        std::filesystem::remove(path_);
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    /// Both sides use one file: where it lies in memory makes a difference.
    static const File& Shared() {
        static const File file;
        return file;
    }
    [[nodiscard]] int Descriptor() const { return descriptor_; }
    void Lengthen(off_t size) const {
        if (ftruncate(descriptor_, size) != 0) std::abort();
    }
    [[nodiscard]] bool Open(AUX::FileStream& stream,
                            std::uint32_t access = AUX::kAccessRead | AUX::kAccessWrite) const {
        std::u16string text = u"Z:" + path_.u16string();
        std::ranges::replace(text, u'/', u'\\');
        return stream.Open(text.c_str(), OPEN_EXISTING, access, FILE_SHARE_READ,
                           FILE_ATTRIBUTE_NORMAL) == AUX::kStatusOk;
    }

private:
    std::filesystem::path path_;
    int descriptor_;
};

enum class Direction { Read, Write };

template <Direction direction>
void FileByStream(benchmark::State& state) {
    AUX::FileStream stream;
    if (!File::Shared().Open(stream)) return state.SkipWithError("cannot open");
    Buffer buffer;
    char* const bytes = buffer.As<char>();
    for (auto _ : state) {
        (void)stream.Rewind();
        for (std::int64_t done = 0; done < kTotal; done += kLargest) {
            std::int64_t count = 0;
            if (direction == Direction::Read ? stream.Read(bytes, kLargest, count)
                                             : stream.Write(bytes, kLargest, count)) {
                return state.SkipWithError("cannot move bytes");
            }
        }
    }
}
template <Direction direction>
void FileByCall(benchmark::State& state) {
    const int file = File::Shared().Descriptor();
    Buffer buffer;
    char* const bytes = buffer.As<char>();
    for (auto _ : state) {
        for (std::int64_t done = 0; done < kTotal; done += kLargest) {
            const ssize_t count = direction == Direction::Read
                                      ? pread(file, bytes, kLargest, done)
                                      : pwrite(file, bytes, kLargest, done);
            if (count != kLargest) return state.SkipWithError("cannot move bytes");
        }
    }
}

constexpr std::int64_t kMappedSize = 64 << 20;

/// Places for reads of 4 KiB: one after the other, or all over the file.
template <bool isRandom>
std::int64_t NextPlace(std::int64_t place) {
    constexpr std::int64_t kStep = isRandom ? 40'503 * std::int64_t{kLargest} : kLargest;
    return (place + kStep) % kMappedSize;
}

template <bool isRandom>
void ReadMapped(benchmark::State& state) {
    File::Shared().Lengthen(kMappedSize);
    AUX::MappedFileStream stream;
    if (!File::Shared().Open(stream, AUX::kAccessRead)) return state.SkipWithError("cannot open");
    Buffer buffer;
    std::int64_t place = 0;
    for (auto _ : state) {
        std::int64_t count = 0;
        if (isRandom || place == 0) (void)stream.Seek(AUX::SeekMode::Start, place);
        if (stream.Read(buffer.As<char>(), kLargest, count)) {
            return state.SkipWithError("cannot read");
        }
        place = NextPlace<isRandom>(place);
    }
}
template <bool isRandom>
void ReadWholeMapping(benchmark::State& state) {
    File::Shared().Lengthen(kMappedSize);
    void* const whole =
        mmap(nullptr, kMappedSize, PROT_READ, MAP_SHARED, File::Shared().Descriptor(), 0);
    if (whole == MAP_FAILED) return state.SkipWithError("cannot map");
    Buffer buffer;
    std::int64_t place = 0;
    for (auto _ : state) {
        std::memcpy(buffer.As<char>(), static_cast<const char*>(whole) + place, kLargest);
        benchmark::DoNotOptimize(buffer.As<char>());
        place = NextPlace<isRandom>(place);
    }
    munmap(whole, kMappedSize);
}

struct Comparison {
    const char* workload;
    void (*own)(benchmark::State&);
    const char* peer;
    void (*others)(benchmark::State&);
    double aim;
};
constexpr Comparison kComparisons[] = {
    {"write_8", WriteStream<8, kHalf>, "vector", WriteVector<8, kHalf>, 1 / 1.2},
    {"write_8_1M", WriteStream<8, kTotal>, "vector", WriteVector<8, kTotal>, 1 / 1.2},
    {"write_4096", WriteStream<4096, kHalf>, "vector", WriteVector<4096, kHalf>, 1 / 2.0},
    {"write_4096_1M", WriteStream<4096, kTotal>, "vector", WriteVector<4096, kTotal>, 1 / 2.0},
    {"read_8", ReadStream<8>, "vector", ReadVector<8>, 1 / 1.2},
    {"read_4096", ReadStream<4096>, "vector", ReadVector<4096>, 1 / 2.0},
    {"file_read_4096", FileByStream<Direction::Read>, "pread", FileByCall<Direction::Read>, 1.05},
    {"file_write_4096", FileByStream<Direction::Write>, "pwrite", FileByCall<Direction::Write>,
     1.05},
    {"mapped_read_4096", ReadMapped<false>, "mapping", ReadWholeMapping<false>, 1.3},
    {"mapped_random_4096", ReadMapped<true>, "mapping", ReadWholeMapping<true>, 1.3},
};

}  // namespace

int main(int count, char** arguments) {
    // Both sides' memory is malloc's. It learns from what is freed whether to keep freed memory for
    // the next time, so that else the order of the first runs would decide who pays for new pages.
    (void)mallopt(M_MMAP_THRESHOLD, 32 << 20);
    (void)mallopt(M_TRIM_THRESHOLD, 64 << 20);
    for (const Comparison& row : kComparisons) {
        RatioTable::Add(row.workload, "library", row.own);
        RatioTable::Add(row.workload, row.peer, row.others);
    }
    RatioTable table;
    if (!table.RunAll(count, arguments)) return 2;
    RatioTable::PrintHead("time by peer's", {"library", "peer"});
    for (const Comparison& row : kComparisons) {
        table.PrintRow(row.workload, {"library", row.peer}, row.peer, row.aim);
    }
}
