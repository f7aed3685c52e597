// Feeds a fuzz target without libFuzzer: every file of a corpus folder, every truncation of the
// small ones, and a fixed number of seeded mutations, so that a failure comes back on each run.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr int kMutationsPerFile = 2000;
constexpr std::size_t kTruncateUpTo = 4096;  // bytes; larger files are cut at random places only

void Run(const Bytes& input) {
    // A copy of the exact size lets the address sanitizer see a read past the end.
    const Bytes exact(input);
    LLVMFuzzerTestOneInput(exact.data(), exact.size());
}

Bytes Mutate(Bytes bytes, const std::vector<Bytes>& corpus, std::mt19937& random) {
    const auto below = [&](std::size_t limit) {
        return std::uniform_int_distribution<std::size_t>(0, limit - 1)(random);
    };
    for (std::size_t steps = 1 + below(4); steps > 0; --steps) {
        if (bytes.empty()) bytes.push_back(0);
        const std::size_t at = below(bytes.size());
        switch (below(6)) {
            case 0:
                bytes[at] = static_cast<std::uint8_t>(bytes[at] ^ (1u << below(8)));
                break;
            case 1:
                bytes[at] = static_cast<std::uint8_t>(below(256));
                break;
            case 2:
                bytes.resize(at);
                break;
            case 3:
                bytes.insert(bytes.begin() + static_cast<std::ptrdiff_t>(at), bytes[at]);
                break;
            case 4: {  // A 32-bit count becomes an extreme one.
                constexpr std::uint8_t kEdges[] = {0x00, 0x7F, 0x80, 0xFF};
                for (std::size_t k = at; k < std::min(at + 4, bytes.size()); ++k) {
                    bytes[k] = kEdges[below(4)];
                }
                break;
            }
            default: {
                const Bytes& other = corpus[below(corpus.size())];
                if (other.empty()) break;
                const std::size_t from = below(other.size());
                bytes.resize(at);
                bytes.insert(bytes.end(), other.begin() + static_cast<std::ptrdiff_t>(from),
                             other.end());
            }
        }
    }
    return bytes;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s CORPUS-FOLDER\n", argv[0]);
        return 2;
    }
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(argv[1])) {
        if (entry.is_regular_file()) files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    if (files.empty()) {
        std::fprintf(stderr, "%s: no file in %s\n", argv[0], argv[1]);
        return 1;
    }
    std::vector<Bytes> corpus;
    for (const auto& path : files) {
        std::ifstream in(path, std::ios::binary);
        corpus.emplace_back(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }
    std::mt19937 random(20);
    for (const Bytes& seed : corpus) {
        Run(seed);
        for (std::size_t size = 0; size < std::min(seed.size(), kTruncateUpTo); ++size) {
            Run(Bytes(seed.begin(), seed.begin() + static_cast<std::ptrdiff_t>(size)));
        }
        for (int k = 0; k < kMutationsPerFile; ++k) Run(Mutate(seed, corpus, random));
    }
    std::printf("%zu files\n", corpus.size());
    return 0;
}
