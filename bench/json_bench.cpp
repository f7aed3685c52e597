// The text layer of the bags beside RapidJSON, which reads and writes UTF-16 too, and simdjson, to
// which a text has to be converted first; base64 beside OpenSSL's. Texts that are written
// go into a buffer that is used again, so that the time is the writer's and not the system's.

#include <charconv>
#include <cmath>
#include <dlfcn.h>
#include <openssl/evp.h>
#include <rapidjson/document.h>
#include <rapidjson/prettywriter.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <simdjson.h>
#include <string>
#include <vector>

#include "bench/ratio_table.h"
#include "cab/base64.h"
#include "cab/json_number.h"
#include "cab/json_text.h"
#include "foundation/utf8.h"

namespace {

using namespace AUX::CAB;
using bench::RatioTable;
using Utf16 = rapidjson::UTF16<char16_t>;
using RapidDocument = rapidjson::GenericDocument<Utf16>;
using RapidValue = rapidjson::GenericValue<Utf16>;
using RapidBuffer = rapidjson::GenericStringBuffer<Utf16>;
using Text = std::u16string;

constexpr const char* kLibrary = "library";
constexpr const char* kRapid = "rapidjson";
constexpr const char* kRapidInSitu = "in situ";
constexpr const char* kSimd = "simdjson";
constexpr const char* kSimdConverted = "converted";

std::string ToUtf8(const Text& text) {
    std::string bytes(text.size() * 3, 0);
    bytes.resize(AUX::EncodeUtf8(text.data(), std::ssize(text), bytes.data(), bytes.size(), false));
    return bytes;
}

Text Widen(const std::string& text) { return Text(text.begin(), text.end()); }

/// Records as they come from a service, in lines; what is asked for stands behind them.
Text MakeText(std::size_t units) {
    Text text = u"{\n  \"records\": [\n";
    for (unsigned i = 0; text.size() < units; ++i) {
        const std::string n = std::to_string(i);
        text += i ? u",\n    {" : u"    {";
        text += Widen(
            "\n      \"id\": " + std::to_string(i * 7919ull) +
            ",\n      \"name\": \"record number " + n +
            "\",\n      \"price\": " + std::to_string(i % 1000) + "." +
            std::to_string(10 + i % 89) + ",\n      \"tags\": [\"first\", \"second tag\", \"t" + n +
            "\"],\n      \"active\": " + (i % 3 ? "true" : "false") +
            ",\n      \"size\": {\"width\": " + std::to_string(i % 640) + ", \"height\": 480.5}");
        text += u",\n      \"title\": \"Größe und Länge der Dinge, \\\"eins\\\" und zwei\"\n    }";
    }
    return text + u"\n  ],\n  \"meta\": {\"count\": 17}\n}\n";
}

AUX::WStringView View(const Text& text) { return {text.data(), text.size()}; }

double ReadAll(JsonNode& node) {
    double sum = 0;
    switch (node.type) {
        case JsonType::String:
            return static_cast<double>(AsText(node).size());
        case JsonType::Number:
            return AsNumber(node);
        case JsonType::Boolean:
            return AsBool(node);
        default:
            for (JsonNode* const child : ChildrenOf(node)) {
                sum += static_cast<double>(child->nameLength) + ReadAll(*child);
            }
            return sum;
    }
}

double ReadAll(const RapidValue& value) {
    double sum = 0;
    if (value.IsString()) return value.GetStringLength();
    if (value.IsNumber()) return value.GetDouble();
    if (value.IsBool()) return value.GetBool();
    if (value.IsArray()) {
        for (const RapidValue& child : value.GetArray()) sum += ReadAll(child);
    } else if (value.IsObject()) {
        for (const auto& member : value.GetObject()) {
            sum += member.name.GetStringLength() + ReadAll(member.value);
        }
    }
    return sum;
}

double ReadAll(simdjson::dom::element value) {
    double sum = 0;
    switch (value.type()) {
        case simdjson::dom::element_type::STRING:
            return static_cast<double>(value.get_string_length().value());
        case simdjson::dom::element_type::BOOL:
            return value.get_bool().value();
        case simdjson::dom::element_type::ARRAY:
            for (const auto child : simdjson::dom::array(value)) sum += ReadAll(child);
            return sum;
        case simdjson::dom::element_type::OBJECT:
            for (const auto field : simdjson::dom::object(value)) {
                sum += static_cast<double>(field.key.size()) + ReadAll(field.value);
            }
            return sum;
        default:
            return value.is_null() ? 0 : value.get_double().value();
    }
}

/// Runs what simdjson does, on a text that is converted each time, and on one that was before.
template <class Work>
void AddSimd(const std::string& workload, const Text& text, Work work) {
    RatioTable::Add(workload, kSimd, [text, work](auto& state) {
        const simdjson::padded_string bytes(ToUtf8(text));
        for (auto _ : state) benchmark::DoNotOptimize(work(bytes.data(), bytes.size()));
    });
    RatioTable::Add(workload, kSimdConverted, [text, work](auto& state) {
        std::vector<char> bytes(text.size() * 3 + simdjson::SIMDJSON_PADDING);
        for (auto _ : state) {
            const std::size_t size =
                AUX::EncodeUtf8(text.data(), std::ssize(text), bytes.data(), bytes.size(), false);
            benchmark::DoNotOptimize(work(bytes.data(), size));
        }
    });
}

void AddReading(const std::string& size, const Text& text) {
    RatioTable::Add("one_key_" + size, kLibrary, [text](auto& state) {
        for (auto _ : state) {
            const JsonHandle root = ParseJson(View(text));
            const JsonHandle meta = ChildAt(*root, FindChild(*root, TEXT("meta")));
            benchmark::DoNotOptimize(AsNumber(*ChildAt(*meta, FindChild(*meta, TEXT("count")))));
        }
    });
    RatioTable::Add("one_key_" + size, kRapid, [text](auto& state) {
        for (auto _ : state) {
            RapidDocument root;
            root.Parse(text.c_str());
            benchmark::DoNotOptimize(root[u"meta"][u"count"].GetDouble());
        }
    });
    static simdjson::dom::parser parser;
    static simdjson::ondemand::parser onDemand;
    AddSimd("one_key_" + size, text, [](const char* bytes, std::size_t length) {
        simdjson::ondemand::document root;
        (void)onDemand.iterate(bytes, length, length + simdjson::SIMDJSON_PADDING).get(root);
        return root["meta"]["count"].get_double().value();
    });
    RatioTable::Add("everything_" + size, kLibrary, [text](auto& state) {
        for (auto _ : state) benchmark::DoNotOptimize(ReadAll(*ParseJson(View(text))));
    });
    RatioTable::Add("everything_" + size, kRapid, [text](auto& state) {
        for (auto _ : state) {
            RapidDocument root;
            root.Parse(text.c_str());
            benchmark::DoNotOptimize(ReadAll(root));
        }
    });
    RatioTable::Add("everything_" + size, kRapidInSitu, [text](auto& state) {
        Text copy = text;
        for (auto _ : state) {
            copy = text;  // Reading in situ uses the text up.
            RapidDocument root;
            root.ParseInsitu(copy.data());
            benchmark::DoNotOptimize(ReadAll(root));
        }
    });
    AddSimd("everything_" + size, text, [](const char* bytes, std::size_t length) {
        return ReadAll(parser.parse(bytes, length, false).value());
    });
    RatioTable::Add("minify_" + size, kLibrary, [text](auto& state) {
        AUX::WString out;
        for (auto _ : state) {
            out.Clear();
            WriteJson(*ParseJson(View(text)), kJsonCompact, JsonPlace::InArray, out);
            benchmark::DoNotOptimize(out.Text());
        }
    });
    AddSimd("minify_" + size, text, [](const char* bytes, std::size_t length) {
        static std::vector<char> out;
        out.resize(length + simdjson::SIMDJSON_PADDING);
        std::size_t written = 0;
        const bool isWell = !simdjson::minify(bytes, length, out.data(), written);
        return isWell ? written : 0;
    });
}

void AddWriting(const std::string& size, const Text& text) {
    for (const bool isCompact : {true, false}) {
        const std::string workload = (isCompact ? "compact_" : "formatted_") + size;
        RatioTable::Add(workload, kLibrary, [text, isCompact](auto& state) {
            const JsonHandle root = ParseJson(View(text));
            (void)ReadAll(*root);
            AUX::WString out;
            for (auto _ : state) {
                out.Clear();
                WriteJson(*root, isCompact ? kJsonCompact : 0, JsonPlace::InArray, out);
                benchmark::DoNotOptimize(out.Text());
            }
        });
        RatioTable::Add(workload, kRapid, [text, isCompact](auto& state) {
            RapidDocument root;
            root.Parse(text.c_str());
            RapidBuffer out;
            for (auto _ : state) {
                out.Clear();
                if (isCompact) {
                    rapidjson::Writer<RapidBuffer, Utf16, Utf16> writer(out);
                    root.Accept(writer);
                } else {
                    rapidjson::PrettyWriter<RapidBuffer, Utf16, Utf16> writer(out);
                    writer.SetIndent('\t', 1);
                    root.Accept(writer);
                }
                benchmark::DoNotOptimize(out.GetString());
            }
        });
    }
}

void AddBuilding() {
    constexpr int kRecords = 5000;
    RatioTable::Add("build", kLibrary, [](auto& state) {
        AUX::WString out;
        for (auto _ : state) {
            out.Clear();
            JsonHandle root = NewNode(JsonType::Array);
            for (int i = 0; i < kRecords; ++i) {
                JsonHandle record = NewNode(JsonType::Object);
                const auto add = [&](const WCHAR* name, auto set) {
                    JsonHandle child = NewNode(JsonType::Null);
                    set(child);
                    SetNodeName(child, name);
                    AppendChild(record, std::move(child));
                };
                add(TEXT("number"), [&](JsonHandle& node) { SetNodeInt(node, i * 17); });
                add(TEXT("price"), [&](JsonHandle& node) { SetNodeDouble(node, i / 8.0); });
                add(TEXT("title"), [&](JsonHandle& node) {
                    SetNodeString(node, TEXT("A title of some length, as they are"));
                });
                add(TEXT("active"), [&](JsonHandle& node) { SetNodeBool(node, i % 2 != 0); });
                AppendChild(root, std::move(record));
            }
            WriteJson(*root, kJsonCompact, JsonPlace::InArray, out);
            benchmark::DoNotOptimize(out.Text());
        }
    });
    RatioTable::Add("build", kRapid, [](auto& state) {
        RapidBuffer out;
        for (auto _ : state) {
            out.Clear();
            RapidDocument root(rapidjson::kArrayType);
            auto& memory = root.GetAllocator();
            for (int i = 0; i < kRecords; ++i) {
                RapidValue record(rapidjson::kObjectType);
                const auto add = [&](const char16_t* name, RapidValue value) {
                    record.AddMember(RapidValue(name, memory).Move(), value, memory);
                };
                add(u"number", RapidValue(i * 17));
                add(u"price", RapidValue(i / 8.0));
                add(u"title", RapidValue(u"A title of some length, as they are", memory));
                add(u"active", RapidValue(i % 2 != 0));
                root.PushBack(record, memory);
            }
            rapidjson::Writer<RapidBuffer, Utf16, Utf16> writer(out);
            root.Accept(writer);
            benchmark::DoNotOptimize(out.GetString());
        }
    });
}

void AddNumbers() {
    static std::vector<std::string> narrow;
    static std::vector<Text> wide;
    for (int i = 0; i < 1000; ++i) {
        const double number = std::sin(i) * std::pow(10, i % 9);
        char digits[64];
        const auto end = i % 3 ? std::to_chars(digits, digits + 64, number)
                               : std::to_chars(digits, digits + 64, static_cast<int>(number));
        narrow.emplace_back(digits, end.ptr);
        wide.push_back(Widen(narrow.back()));
    }
    RatioTable::Add("numbers", kLibrary, [](auto& state) {
        for (auto _ : state) {
            for (const Text& text : wide) benchmark::DoNotOptimize(ReadJsonNumber(View(text)));
        }
    });
    RatioTable::Add("numbers", "from_chars", [](auto& state) {
        for (auto _ : state) {
            for (const std::string& text : narrow) {
                double value = 0;
                std::from_chars(text.data(), text.data() + text.size(), value);
                benchmark::DoNotOptimize(value);
            }
        }
    });
}

// simdutf is inside the JavaScript engine's library; see utf8_bench.cpp. It writes 8-bit text only.
struct SimdutfResult {
    int error;
    std::size_t count;
};
using SimdutfDecode = SimdutfResult (*)(const char16_t*, std::size_t, char*, std::uint64_t);
using SimdutfWiden = std::size_t (*)(const char*, std::size_t, char16_t*);
using SimdutfEncode = std::size_t (*)(const char*, std::size_t, char*, std::uint64_t);

template <class Call>
Call FindSimdutf(const char* name) {
    void* const module = dlopen("libnode.so.108", RTLD_LAZY | RTLD_LOCAL);
    return module ? reinterpret_cast<Call>(dlsym(module, name)) : nullptr;
}

void AddBase64() {
    static std::vector<std::uint8_t> bytes(48 << 10);
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<std::uint8_t>(i * 37);
    static Text text(Base64Length(bytes.size()), 0);
    EncodeBase64(bytes.data(), bytes.size(), text.data());
    static const std::string narrow(text.begin(), text.end());
    const auto size = static_cast<int>(bytes.size());
    RatioTable::Add("base64_encode", kLibrary, [](auto& state) {
        std::vector<WCHAR> out(text.size());
        for (auto _ : state) {
            EncodeBase64(bytes.data(), bytes.size(), out.data());
            benchmark::ClobberMemory();
        }
    });
    RatioTable::Add("base64_encode", "openssl", [size](auto& state) {
        std::vector<unsigned char> out(narrow.size() + 1);
        for (auto _ : state) {
            EVP_EncodeBlock(out.data(), bytes.data(), size);
            benchmark::ClobberMemory();
        }
    });
    RatioTable::Add("base64_decode", kLibrary, [](auto& state) {
        std::vector<std::uint8_t> out(text.size());
        for (auto _ : state) benchmark::DoNotOptimize(DecodeBase64(View(text), out.data()));
    });
    RatioTable::Add("base64_decode", "openssl", [](auto& state) {
        std::vector<unsigned char> out(narrow.size());
        for (auto _ : state) {
            benchmark::DoNotOptimize(
                EVP_DecodeBlock(out.data(), reinterpret_cast<const unsigned char*>(narrow.data()),
                                static_cast<int>(narrow.size())));
        }
    });
    if (const auto decode = FindSimdutf<SimdutfDecode>("_ZN7simdutf16base64_to_binaryEPKDsmPcm")) {
        RatioTable::Add("base64_decode", "simdutf", [decode](auto& state) {
            std::vector<char> out(narrow.size());
            for (auto _ : state) {
                benchmark::DoNotOptimize(decode(text.data(), text.size(), out.data(), 0).count);
            }
        });
    }
    const auto encode = FindSimdutf<SimdutfEncode>("_ZN7simdutf16binary_to_base64EPKcmPcm");
    const auto widen = FindSimdutf<SimdutfWiden>("_ZN7simdutf25convert_latin1_to_utf16leEPKcmPDs");
    if (!encode || !widen) return;
    for (const bool widens : {false, true}) {
        RatioTable::Add("base64_encode", widens ? "widened" : "simdutf",
                        [encode, widen, widens](auto& state) {
                            std::vector<char> out(narrow.size());
                            Text wide(narrow.size(), 0);
                            for (auto _ : state) {
                                encode(reinterpret_cast<const char*>(bytes.data()), bytes.size(),
                                       out.data(), 0);
                                if (widens) widen(out.data(), out.size(), wide.data());
                                benchmark::ClobberMemory();
                            }
                        });
    }
}

/// Each shape at a tenth of its size and whole: the time must not grow much more than tenfold.
void AddShapes() {
    for (const std::size_t count : {100'000u, 1'000'000u}) {
        const char* const size = count == 100'000 ? "tenth" : "whole";
        const auto add = [&](const char* name, Text text) {
            RatioTable::Add(name, size, [text](auto& state) {
                for (auto _ : state) {
                    JsonHandle node = ParseJson(View(text));
                    while (node && ChildCount(*node) > 0) {
                        for (JsonNode* const child : ChildrenOf(*node)) (void)AsText(*child);
                        node = ChildAt(*node, 0);
                    }
                }
            });
        };
        Text keys = u"{";
        Text numbers = u"[";
        for (std::size_t i = 0; i < count; ++i) {
            const Text n = Widen(std::to_string(i));
            keys += (i ? u",\"key" : u"\"key") + n + u"\":" + n;
            numbers += (i ? u"," : u"") + n;
        }
        add("million_keys", keys + u"}");
        add("million_numbers", numbers + u"]");
        add("million_levels", Text(count, u'[') + Text(count, u']'));
        add("million_comments", u"[" + Text(count, u'[') + u"/*,*/0" + Text(count, u']') + u"]");
    }
}

}  // namespace

int main(int count, char** arguments) {
    const std::pair<const char*, std::size_t> sizes[] = {{"1MB", 1u << 19}, {"20MB", 10u << 20}};
    for (const auto& [name, units] : sizes) {
        const Text text = MakeText(units);
        AddReading(name, text);
        AddWriting(name, text);
    }
    AddBuilding();
    AddNumbers();
    AddBase64();
    AddShapes();
    RatioTable table;
    if (!table.RunAll(count, arguments)) return 2;
    const std::vector<const char*> readers = {kLibrary, kRapid, kRapidInSitu, kSimd,
                                              kSimdConverted};
    const struct {
        const char* work;
        const char* measure;
        double aim;
    } rows[] = {{"one_key_", kSimdConverted, 1},  {"one_key_", kRapid, 0.2},
                {"everything_", kRapidInSitu, 1}, {"minify_", kSimdConverted, 1},
                {"compact_", kRapid, 1 / 3.0},    {"formatted_", kRapid, 1 / 2.5}};
    for (const char* const measure : {kRapid, kRapidInSitu, kSimdConverted}) {
        RatioTable::PrintHead((std::string("by ") + measure).c_str(), readers);
        for (const auto& row : rows) {
            if (row.measure != measure) continue;
            for (const auto& [size, units] : sizes) {
                table.PrintRow((std::string(row.work) + size).c_str(), readers, measure, row.aim);
            }
        }
        if (measure == kRapid) table.PrintRow("build", readers, measure, 1.5);
    }
    RatioTable::PrintHead("by from_chars", {kLibrary});
    table.PrintRow("numbers", {kLibrary}, "from_chars", 2);
    const std::vector<const char*> encoders = {kLibrary, "openssl", "simdutf", "widened"};
    RatioTable::PrintHead("base64", encoders);
    table.PrintRow("base64_encode", encoders, "widened", 1 / 0.8);
    table.PrintRow("base64_decode", encoders, "simdutf", 1 / 0.8);
    RatioTable::PrintHead("by a tenth", {"whole"});
    for (const char* const shape :
         {"million_keys", "million_numbers", "million_levels", "million_comments"}) {
        table.PrintRow(shape, {"whole"}, "tenth", 15);
    }
}
