// Dictionaries of 1,000 keys beside std::map and a sorted vector with the same data, and a lookup
// by path. A table at the end gives the times by the map's, and another what a key takes of memory.

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <map>
#include <string>
#include <variant>
#include <vector>

#include "bench/ratio_table.h"
#include "cab/data_dictionary.h"
#include "cab/data_root.h"
#include "cab/item_path.h"
#include "cab/template_set.h"
#include "platform/text.h"

namespace {

using namespace AUX::CAB;
using bench::RatioTable;
using platform::WideString;

using Value = std::variant<bool, std::int32_t, std::int64_t, double, WideString>;
using Map = std::map<WideString, Value>;
using Flat = std::vector<std::pair<WideString, Value>>;

constexpr std::size_t kKeys = 1000;

/// Keys of 8 to 14 units, in no order.
const std::vector<WideString>& Keys() {
    static const std::vector<WideString> keys = [] {
        std::vector<WideString> made;
        std::uint32_t random = 7;
        for (std::size_t i = 0; i < kKeys; ++i) {
            random = random * 1664525u + 1013904223u;
            made.push_back(platform::FromUtf8("setting" + std::to_string(random % 10'000'000)));
        }
        return made;
    }();
    return keys;
}

Map MakeMap() {
    Map map;
    for (const WideString& key : Keys()) map[key] = std::int32_t{5};
    return map;
}
Flat MakeFlat() {
    Flat flat;
    for (const WideString& key : Keys()) flat.emplace_back(key, std::int32_t{5});
    std::sort(flat.begin(), flat.end(),
              [](const auto& a, const auto& b) { return a.first < b.first; });
    return flat;
}

struct ReleaseBag {
    void operator()(DataRoot* bag) const { bag->Release(); }
};
using Bag = std::unique_ptr<DataRoot, ReleaseBag>;

Bag MakeBag() {
    Bag bag(DataRoot::Create());
    DataDictionary& keys = *bag->GetRootItem()->AsDictionary();
    const std::int32_t five = 5;
    for (const WideString& key : Keys()) {
        DataItem* item =
            keys.GetOrAdd(key.data(), static_cast<std::int64_t>(key.size()), Kind::Int);
        benchmark::DoNotOptimize(item->SetInt(&five, 0));
    }
    return bag;
}

/// A template with the same keys.
struct Shape {
    Shape() : set(TemplateSet::Create()) {
        std::string text = "<CabTemplate><Root type='Dictionary' itemSet='s'/><ItemSet id='s'>";
        for (const WideString& key : Keys()) {
            text += "<Item id='" + platform::ToUtf8(key) + "' type='Int' defVal='5'/>";
        }
        text += "</ItemSet></CabTemplate>";
        if (FAILED(set->LoadFromBuffer(text.data(), text.size()))) std::abort();
    }
    ~Shape() { set->Release(); }
    [[nodiscard]] Bag Make() const {
        std::unique_ptr<TemplateHandle> handle;
        if (FAILED(set->GetRoot({}, handle))) std::abort();
        return Bag(DataRoot::Create(std::move(handle)));
    }
    TemplateSet* set;
};

void FindInBag(benchmark::State& state) {
    const Bag bag = MakeBag();
    DataDictionary& keys = *bag->GetRootItem()->AsDictionary();
    for (auto _ : state) {
        for (const WideString& key : Keys())
            benchmark::DoNotOptimize(keys.Find(AUX::WStringView(key)));
    }
}
void FindInMap(benchmark::State& state) {
    const Map map = MakeMap();
    for (auto _ : state) {
        for (const WideString& key : Keys()) benchmark::DoNotOptimize(map.find(key));
    }
}
void FindInFlat(benchmark::State& state) {
    const Flat flat = MakeFlat();
    for (auto _ : state) {
        for (const WideString& key : Keys()) {
            benchmark::DoNotOptimize(
                std::lower_bound(flat.begin(), flat.end(), key,
                                 [](const auto& a, const WideString& b) { return a.first < b; }));
        }
    }
}

template <class Make>
void Build(benchmark::State& state, Make make) {
    for (auto _ : state) benchmark::DoNotOptimize(make());
}

/// Three names deep, of a hundred keys each.
void FindByPath(benchmark::State& state) {
    const Bag bag(DataRoot::Create());
    for (int i = 0; i < 100; ++i) {
        const std::string name = std::to_string(i);
        const std::string path = "group" + name + ".part" + name + ".value" + name;
        if (!MakePath(*bag->GetRootItem(), AUX::WStringView(platform::FromUtf8(path)), Kind::Int)) {
            std::abort();
        }
    }
    const WideString path = TEXT("group50.part50.value50");
    for (auto _ : state) {
        benchmark::DoNotOptimize(FindPath(*bag->GetRootItem(), AUX::WStringView(path)));
    }
}

/// Pages that the process has in memory, as Linux counts them.
double ResidentBytes() {
    std::ifstream file("/proc/self/statm");
    double all = 0;
    double resident = 0;
    file >> all >> resident;
    return resident * 4096;
}

/// Prints the bytes that an item, or a row, takes among many of its container.
template <class Make>
void PrintMemory(const char* name, Make make) {
    constexpr int kContainers = 200;
    // To the end: the next ones get memory of their own.
    static std::vector<decltype(make())> kept;
    kept.reserve(kContainers);
    const double before = ResidentBytes();
    for (int i = 0; i < kContainers; ++i) kept.push_back(make());
    std::printf("%-24s %6.0f\n", name, (ResidentBytes() - before) / (kContainers * kKeys));
}

}  // namespace

int main(int count, char** arguments) {
    Shape shape;
    RatioTable table;
    RatioTable::Add("find", "bag", FindInBag);
    RatioTable::Add("find", "map", FindInMap);
    RatioTable::Add("find", "flat", FindInFlat);
    RatioTable::Add("build", "bag", [](auto& state) { Build(state, MakeBag); });
    RatioTable::Add("build", "map", [](auto& state) { Build(state, MakeMap); });
    RatioTable::Add("template", "bag",
                    [&](auto& state) { Build(state, [&] { return shape.Make(); }); });
    RatioTable::Add("template", "map", [](auto& state) { Build(state, MakeMap); });
    RatioTable::Add("path", "bag", FindByPath);
    if (!table.RunAll(count, arguments)) return 1;
    RatioTable::PrintHead("1,000 keys, by the time of std::map", {"bag", "flat"});
    table.PrintRow("find", {"bag", "flat"}, "map", 1.0 / 3);
    table.PrintRow("build", {"bag"}, "map", 2.5);
    table.PrintRow("template", {"bag"}, "map", 1.5);
    std::printf("\nbytes for each key\n");
    PrintMemory("bag", MakeBag);
    PrintMemory("bag of a template", [&] { return shape.Make(); });
    PrintMemory("map", MakeMap);
    PrintMemory("sorted vector", MakeFlat);
    return 0;
}
