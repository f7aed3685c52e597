// Numbers at paths of three names, read and set through the objects of a bag, beside the plain item
// and nlohmann's JSON pointers.

#include <nlohmann/json.hpp>
#include <string>

#include "bench/ratio_table.h"
#include "cab/item_path.h"
#include "objects/bag_face.h"
#include "objects/item_face.h"
#include "platform/text.h"

namespace {

using namespace AUX;
using bench::RatioTable;
using platform::ComPtr;

constexpr const WCHAR* kPath = TEXT("options.page.width");

/// Settings as a host keeps them: some dozen names at each place.
struct Settings {
    Settings() : bag(BagFace::Make(CAB::DataRoot::Create())) {
        if (!bag || FAILED(bag->GetRootItem(root.Put()))) std::abort();
        for (const char* first : {"options", "recent", "view", "print", "security"}) {
            for (const char* second : {"page", "margins", "text", "links", "fonts", "images"}) {
                for (const char* third : {"width", "height", "unit", "name", "level", "flags"}) {
                    const std::string path = std::string(first) + "." + second + "." + third;
                    if (FAILED(root->SetIntAt(platform::FromUtf8(path).c_str(), 7))) std::abort();
                    json[first][second][third] = 7;
                }
            }
        }
    }

    ComPtr<BagFace> bag;
    ComPtr<IBagItem> root;
    nlohmann::json json;
};

}  // namespace

int main(int count, char** arguments) {
    Settings settings;
    IBagItem* const root = settings.root.Get();
    CAB::DataItem& item = *ItemFace::Behind(root)->Item();
    const nlohmann::json::json_pointer pointer("/options/page/width");
    RatioTable table;
    RatioTable::Add("read", "object", [&](benchmark::State& state) {
        LONG value = 0;
        for (auto _ : state) {
            benchmark::DoNotOptimize(root->GetIntAt(kPath, 0, &value));
            benchmark::DoNotOptimize(value);
        }
    });
    RatioTable::Add("read", "item", [&](benchmark::State& state) {
        std::int32_t value = 0;
        for (auto _ : state) {
            benchmark::DoNotOptimize(CAB::FindPath(item, kPath)->GetInt(value));
            benchmark::DoNotOptimize(value);
        }
    });
    RatioTable::Add("read", "nlohmann", [&](benchmark::State& state) {
        for (auto _ : state) benchmark::DoNotOptimize(settings.json.at(pointer).get<int>());
    });
    RatioTable::Add("set", "object", [&](benchmark::State& state) {
        LONG value = 0;
        for (auto _ : state) benchmark::DoNotOptimize(root->SetIntAt(kPath, ++value));
    });
    RatioTable::Add("set", "nlohmann", [&](benchmark::State& state) {
        int value = 0;
        for (auto _ : state) {
            settings.json.at(pointer) = ++value;
            benchmark::DoNotOptimize(settings.json);
        }
    });
    if (!table.RunAll(count, arguments)) return 1;
    RatioTable::PrintHead("a number three names deep, by the time of nlohmann", {"object", "item"});
    table.PrintRow("read", {"object", "item"}, "nlohmann", 0);
    table.PrintRow("set", {"object"}, "nlohmann", 0);
    return 0;
}
