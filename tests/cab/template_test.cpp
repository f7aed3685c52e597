#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <stdexcept>
#include <thread>

#include "cab/bag_text.h"
#include "cab/com_stream.h"
#include "cab/template_reader.h"
#include "cab/template_set.h"
#include "foundation/mem_stream.h"
#include "platform/text.h"
#include "platform/unique_bstr.h"
#include "tests/cab/bag_support.h"
#include "tests/support/fail_each_allocation.h"

namespace {

using namespace bag_test;
using platform::FromUtf8;
using platform::ToUtf8;
using platform::WideString;

struct ReleaseSet {
    void operator()(TemplateSet* set) const { set->Release(); }
};
using SetPtr = std::unique_ptr<TemplateSet, ReleaseSet>;

HRESULT Load(TemplateSet& set, const std::string& content) {
    std::string text = "<CabTemplate>";
    text.append(content).append("</CabTemplate>");
    return set.LoadFromText(FromUtf8(text).c_str());
}
SetPtr Loaded(const std::string& content) {
    SetPtr set(TemplateSet::Create());
    EXPECT_EQ(Load(*set, content), S_OK);
    return set;
}

/// A declaration: name, kind, flags ("~" transient, "*" loose), default, and what is in it.
std::string Show(const ItemSpec& spec) {
    std::ostringstream out;
    out << (spec.name ? ToUtf8(spec.name) : "?") << ':';
    if (spec.flags & SpecTemp) out << '~';
    if (spec.flags & SpecLoose) out << '*';
    switch (spec.kind) {
        case Kind::None:
            out << "none";
            break;
        case Kind::Bool:
            out << (spec.defaultBool ? "true" : "false");
            break;
        case Kind::Int:
            out << spec.defaultInt;
            break;
        case Kind::Int64:
            out << spec.defaultInt64 << 'L';
            break;
        case Kind::Double:
            out << spec.defaultDouble << 'd';
            break;
        case Kind::String:
            out << '"' << (spec.defaultString ? ToUtf8(spec.defaultString) : "") << '"';
            break;
        case Kind::Array:
            out << '[' << (spec.entries ? Show(*spec.entries) : "") << ']';
            break;
        case Kind::Dictionary: {
            out << '{';
            std::int64_t total = 0;
            (void)SpecAt(spec, -1, &total);
            for (std::int64_t i = 0; i < (spec.IsLoose() ? 1 : total); ++i) {
                out << (i ? " " : "") << Show(*SpecAt(spec, i));
            }
            out << '}';
            break;
        }
        default:
            out << '#' << static_cast<int>(spec.kind);
            break;
    }
    return out.str();
}

/// The declaration of a root; what is wrong if there is none.
std::string Root(TemplateSet& set, const char* name = "") {
    try {
        std::unique_ptr<TemplateHandle> handle;
        const HRESULT result = set.GetRoot(WStringView(FromUtf8(name)), handle);
        if (FAILED(result)) return "failed";
        const ItemSpec* spec = handle->GetSpec();
        return spec ? Show(*spec) : "null";
    } catch (const std::invalid_argument& error) {
        return error.what();
    }
}

constexpr char kInvalid[] = "Invalid CAB XML template";

TEST(Template, CompilesWhatIsDeclared) {
    const struct {
        const char* why;
        const char* items;  // of set "s"
        const char* shown;  // of the root
    } kCases[] = {
        {"every kind and its default",
         R"(<Item id="a" type="Bool" defVal="true"/><Item id="b" type="dt_Int" defVal=" -12x"/>
            <Item id="c" type="Int64" defVal="5000000000"/><Item id="d" type="Double" defVal=".5"/>
            <Item id="e" type="String" defVal="é"/><Item id="f" type="Stream" defVal="x"/>
            <Item id="g" type="dt_IUnknown"/><Item id="h" type="Container"/>)",
         "a:true b:-12 c:5000000000L d:0.5d e:\"\xC3\xA9\" f:#6 g:#7 h:#4096"},
        {"defaults that are none",
         R"(<Item id="a" type="Bool" defVal="TRUE"/><Item id="b" type="Int" defVal="3000000000"/>
            <Item id="c" type="Double" defVal="1e999"/><Item id="d" type="Int" defVal="x"/>)",
         "a:false b:0 c:0d d:0"},
        {"flags", R"(<Item id="a" type="Int" temp="1"/><Item id="b" type="Int" temp="TRUE"/>
                     <Item id="c" type="Dictionary" loose="true" itemSet="t"/>)",
         "a:~0 b:0 c:*{x:1}"},
        {"unknown kinds", R"(<Item id="a" type="bool"/><Item id="b"/><Item id="c" type="Int"/>)",
         "?:none ?:none c:0"},
        {"unknown sets", R"(<Item id="a" type="Dictionary" itemSet="no"/><ItemSetRef id="no"/>
                            <Item id="b" type="Array" itemSet="no" valueSpec="v"/>
                            <Item id="c" type="Array" valueSpec="v"/>)",
         "a:{} b:[] c:[]"},
        {"includes come first", R"(<Item id="a" type="Int"/><ItemSetRef id="t"/>)",
         "x:1 y:{z:2} a:0"},
        {"a set in itself", R"(<ItemSetRef id="s"/><Item id="a" type="Int"/>)", "a:0"},
        {"an array's element is the set's first item, included or not",
         R"(<Item id="a" type="Array" itemSet="t"/><Item id="b" type="Array" itemSet="u"/>)",
         "a:[x:1] b:[x:1]"},
        {"dotted keys share", R"(<Item id="a.b" type="Int"/><Item id="a.c.d" type="Int"/>
                                 <Item id="e" type="Int"/><Item id="a.c.f" type="Bool"/>)",
         "a:{b:0 c:{d:0 f:false}} e:0"},
        {"a key of its own keeps dotted ones out",
         R"(<Item id="a" type="Dictionary"/><Item id="a.b" type="Int"/><Item id="a.c" type="Int"/>)",
         "a:{}"},
        {"an included dictionary is taken over",
         R"(<ItemSetRef id="u"/><Item id="y.q" type="Int"/>)", "x:1 y:{z:2} y:{z:2 q:0}"},
        {"an included leaf is not", R"(<ItemSetRef id="t"/><Item id="x.q" type="Int"/>)",
         "x:1 y:{z:2} x:{q:0}"},
    };
    for (const auto& c : kCases) {
        const SetPtr set = Loaded(
            std::string(R"(<Root id="r" type="Dictionary" itemSet="s"/><ItemSet id="s">)") +
            c.items +
            R"(</ItemSet><ItemSet id="t"><Item id="x" type="Int" defVal="1"/><Item id="y.z" type="Int" defVal="2"/></ItemSet>
               <ItemSet id="u"><ItemSetRef id="t"/></ItemSet>
               <ValueSpec id="v"><Range org="1" end="2"/></ValueSpec>)");
        EXPECT_EQ(Root(*set, "r"), std::string("r:{").append(c.shown).append("}")) << c.why;
    }
}

TEST(Template, FindsRootsAndMergesDocuments) {
    const SetPtr set(TemplateSet::Create());
    EXPECT_EQ(Root(*set), "failed") << "nothing is loaded";
    std::unique_ptr<TemplateHandle> handle;
    EXPECT_EQ(set->GetSelectedRoot(handle), E_UNEXPECTED);
    ASSERT_EQ(Load(*set, R"(<Root id="x" type="Dictionary" itemSet="a"/>
                            <Root type="Dictionary" itemSet="b"/>
                            <ItemSet id="a"><Item id="first" type="Int"/></ItemSet>)"),
              S_OK);
    EXPECT_EQ(Root(*set, "y"), kInvalid);
    EXPECT_EQ(Root(*set, "x"), "x:{first:0}");
    EXPECT_EQ(Root(*set, "x' or '1'='1"), "x:{first:0}") << "is no quoted name, and harmless";
    EXPECT_EQ(Root(*set, "'"), kInvalid);
    ASSERT_EQ(Load(*set, R"(<Root id="y" type="Dictionary" itemSet="b"/>
                            <ItemSet id="a"><Item id="second" type="Int"/></ItemSet>
                            <ItemSet id="b"><Item id="c" type="Dictionary" itemSet="a"/></ItemSet>)"),
              S_OK);
    EXPECT_EQ(Root(*set), "x:{first:0}") << "the first one";
    EXPECT_EQ(Root(*set, "y"), "y:{c:{first:0}}");
    EXPECT_EQ(set->SelectRoot(TEXT("y")), S_OK);
    ASSERT_EQ(set->GetSelectedRoot(handle), S_OK);
    EXPECT_EQ(Show(*handle->GetSpec()), "y:{c:{first:0}}");
    EXPECT_EQ(set->SelectRoot(TEXT("x")), S_OK);
    EXPECT_EQ(Show(*handle->GetSpec()), "x:{first:0}") << "whatever is selected";
}

TEST(Template, RefusesWhatIsNone) {
    const SetPtr set(TemplateSet::Create());
    EXPECT_EQ(set->LoadFromText(nullptr), E_POINTER);
    EXPECT_EQ(set->LoadFromStream(nullptr), E_POINTER);
    EXPECT_EQ(set->LoadFromBuffer(nullptr, 3), E_POINTER);
    EXPECT_EQ(set->LoadFromText(TEXT("<Other/>")), E_INVALIDARG);
    EXPECT_TRUE(FAILED(set->LoadFromText(TEXT("<CabTemplate></Other>"))));
    EXPECT_TRUE(FAILED(set->LoadFromText(TEXT("<CabTemplate>"))));
    EXPECT_TRUE(FAILED(set->LoadFromText(TEXT(""))));
    EXPECT_EQ(set->LoadFromText(
                  TEXT("<!DOCTYPE CabTemplate [<!ENTITY a 'b'>]><CabTemplate>&a;</CabTemplate>")),
              static_cast<HRESULT>(0xC00CE584));
    VARIANT source{};
    source.vt = VT_I4;
    EXPECT_EQ(set->Load(source), E_INVALIDARG);
    source.vt = VT_BSTR;
    EXPECT_EQ(set->Load(source), E_POINTER);
    source.vt = VT_UNKNOWN;
    EXPECT_EQ(set->Load(source), E_POINTER);
    EXPECT_EQ(Root(*set), "failed") << "nothing came in";

    const struct {
        const char* why;
        std::string content;
    } kCases[] = {
        {"no set", R"(<Root type="Dictionary"/>)"},
        {"an unknown set", R"(<Root type="Dictionary" itemSet="s"/>)"},
        {"an empty set", R"(<Root type="Dictionary" itemSet="s"/><ItemSet id="s"/>)"},
        {"no dictionary",
         R"(<Root type="Array" itemSet="s"/><ItemSet id="s"><Item type="Int"/></ItemSet>)"},
        {"no kind", R"(<Root itemSet="s"/><ItemSet id="s"><Item type="Int"/></ItemSet>)"},
        {"a dictionary in itself",
         R"(<Root type="Dictionary" itemSet="s"/><ItemSet id="s"><Item id="x" type="Int"/>
            <Item id="d" type="Dictionary" itemSet="s"/></ItemSet>)"},
        {"round a corner",
         R"(<Root type="Dictionary" itemSet="s"/><ItemSet id="s"><Item id="a" type="Array" itemSet="t"/>
            </ItemSet><ItemSet id="t"><Item id="x" type="Dictionary" itemSet="u"/></ItemSet>
            <ItemSet id="u"><Item id="y" type="Dictionary" itemSet="t"/></ItemSet>)"},
        {"by a dotted key",
         R"(<Root type="Dictionary" itemSet="s"/><ItemSet id="s"><Item id="a.x" type="Int"/>
            <Item id="a.d" type="Dictionary" itemSet="s"/></ItemSet>)"},
    };
    for (const auto& c : kCases) EXPECT_EQ(Root(*Loaded(c.content)), kInvalid) << c.why;

    // A chain of sets, each with two of the next; and one that is only deep.
    for (const auto& [sets, copies, fits] :
         {std::tuple(18, 2, true), std::tuple(30, 2, false), std::tuple(200, 1, true),
          std::tuple(3000, 1, false)}) {
        std::string content = R"(<Root type="Dictionary" itemSet="s0"/>)";
        for (int i = 0; i < sets; ++i) {
            content += "<ItemSet id='s" + std::to_string(i) + "'>";
            for (int k = 0; k < copies; ++k) {
                content += "<Item id='" + std::to_string(k) + "' type='Dictionary' itemSet='s" +
                           std::to_string(i + 1) + "'/>";
            }
            content += "</ItemSet>";
        }
        EXPECT_EQ(Root(*Loaded(content)) != kInvalid, fits) << sets << ' ' << copies;
    }
    std::string dotted = "a";
    for (int i = 0; i < 5000; ++i) dotted += ".a";
    EXPECT_EQ(Root(*Loaded(
                  R"(<Root type="Dictionary" itemSet="s"/><ItemSet id="s"><Item type="Int" id=")" +
                  dotted + R"("/></ItemSet>)")),
              kInvalid);
}

TEST(Template, TakesManyItemsAndLongNames) {
    std::string content = R"(<Root type="Dictionary" itemSet="s"/><ItemSet id="s">)";
    for (int i = 0; i < 10'000; ++i) {
        content.append("<Item type='Int' id='key").append(std::to_string(i)).append("'/>");
    }
    const std::string longName(500'000, 'k');
    content.append("<Item type='Int' id='").append(longName).append("'/></ItemSet>");
    const SetPtr set = Loaded(content);
    std::unique_ptr<TemplateHandle> handle;
    ASSERT_EQ(set->GetRoot({}, handle), S_OK);
    const Bag bag(DataRoot::Create(std::move(handle)));
    ASSERT_TRUE(bag);
    DataDictionary& keys = *bag->GetRootItem()->AsDictionary();
    EXPECT_EQ(keys.GetCount(), 10'001u);
    EXPECT_TRUE(keys.Find(TEXT("key9999")));
    EXPECT_TRUE(keys.Find(WStringView(FromUtf8(longName))));
}

/// Sets that each include the next one twice; the last has the given items.
std::string FanOfIncludes(int sets, const std::string& items, const std::string& last) {
    std::string content = R"(<Root type="Dictionary" itemSet="s0"/>)";
    for (int i = 0; i <= sets; ++i) {
        const std::string next = "<ItemSetRef id='s" + std::to_string(i + 1) + "'/>";
        content += "<ItemSet id='s" + std::to_string(i) + "'>";
        if (i < sets) content.append(next).append(next);
        content.append(i == 0 ? items : i == sets ? last : "").append("</ItemSet>");
    }
    return content;
}

TEST(Template, IncludesThatFanOutTakeNoLongTime) {
    const std::string dotted = "<Item id='a.b' type='Int'/>";
    EXPECT_EQ(Root(*Loaded(FanOfIncludes(60, dotted, ""))), kInvalid) << "nothing, 2^60 times";
    const SetPtr set = Loaded(FanOfIncludes(17, dotted, "<Item id='x' type='Int'/>"));
    std::unique_ptr<TemplateHandle> handle;
    ASSERT_EQ(set->GetRoot({}, handle), S_OK);
    std::int64_t total = 0;
    (void)SpecAt(*handle->GetSpec(), -1, &total);
    EXPECT_EQ(total, (1 << 17) + 1);
    const Bag bag(DataRoot::Create(std::move(handle)));
    ASSERT_TRUE(bag);
    EXPECT_EQ(bag->GetRootItem()->AsDictionary()->GetCount(), 2u);
    EXPECT_TRUE(FindPath(*bag->GetRootItem(), TEXT("a.b")));
}

TEST(Template, SetsMayHaveElementsOfThemselves) {
    const SetPtr set = Loaded(
        R"(<Root type="Dictionary" itemSet="s"/>
           <ItemSet id="s"><Item id="kids" type="Dictionary" loose="1" itemSet="s"/>
           <Item id="list" type="Array" itemSet="t"/></ItemSet>
           <ItemSet id="t"><Item type="Dictionary" itemSet="s"/></ItemSet>)");
    std::unique_ptr<TemplateHandle> handle;
    ASSERT_EQ(set->GetRoot({}, handle), S_OK);
    const Bag bag(DataRoot::Create(std::move(handle)));
    ASSERT_TRUE(bag);
    DataItem& root = *bag->GetRootItem();
    EXPECT_TRUE(MakePath(root, TEXT("kids.a.b.c"), Kind::Dictionary));
    EXPECT_FALSE(MakePath(root, TEXT("kids.d"), Kind::Int));
    EXPECT_TRUE(MakePath(root, TEXT("list[0].list[0].kids.a"), Kind::Dictionary));
    EXPECT_TRUE(FindPath(root, TEXT("list[0].list[0].list")));
}

TEST(Template, LoadsFromEverySource) {
    const std::string body =
        R"(<CabTemplate><Root type="Dictionary" itemSet="s"/><ItemSet id="s"><Item id="é" type="Int"/></ItemSet></CabTemplate>)";
    const WideString wide = FromUtf8(std::string("<?xml version='1.0'?>").append(body));
    std::string utf16(reinterpret_cast<const char*>(wide.data()), wide.size() * sizeof(WCHAR));
    std::string latin = "<?xml version='1.0' encoding='ISO-8859-1'?>";
    latin += body;
    latin.erase(latin.find('\xC3'), 1);
    latin[latin.find('\xA9')] = '\xE9';
    for (const std::string& bytes : {body, latin, utf16, std::string(utf16).append(1, '\0')}) {
        const SetPtr set(TemplateSet::Create());
        // From an odd address, too.
        std::string shifted(1, ' ');
        shifted += bytes;
        EXPECT_EQ(set->LoadFromBuffer(shifted.data() + 1, bytes.size()), S_OK);
        EXPECT_EQ(Root(*set), ":{\xC3\xA9:0}");
    }
    std::unique_ptr<AUX::MemStream> memory(new (std::nothrow) AUX::MemStream);
    std::string content = body;
    ASSERT_EQ(
        memory->Open(content.data(), static_cast<std::int64_t>(content.size()), AUX::kAccessRead),
        0);
    const auto stream = MakeComStream(std::move(memory));
    LARGE_INTEGER move{};
    move.QuadPart = 5;
    ASSERT_EQ(stream->Seek(move, STREAM_SEEK_SET, nullptr), S_OK);
    VARIANT source{};
    source.vt = VT_UNKNOWN;
    source.punkVal = stream.Get();
    const platform::UniqueBstr text(SysAllocString(wide.c_str()));
    for (int i = 0; i < 2; ++i) {
        const SetPtr set(TemplateSet::Create());
        EXPECT_EQ(set->Load(source), S_OK) << "from its beginning";
        EXPECT_EQ(Root(*set), ":{\xC3\xA9:0}");
        source.vt = VT_BSTR;
        source.bstrVal = text.Get();
    }
}

TEST(Template, IsCompiledOnceWhicheverThreadAsks) {
    SetPtr set = Loaded(R"(<Root type="Dictionary" itemSet="s"/>
        <ItemSet id="s"><Item id="a" type="Int" valueSpec="v"/></ItemSet>
        <ValueSpec id="v"><ValueSpecNamedRef id="n"/></ValueSpec>
        <ValueSpecNamed id="n"><Case name="one" value="1"/></ValueSpecNamed>)");
    const ItemSpec* found[8] = {};
    std::unique_ptr<TemplateHandle> handles[8];
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([&, i] {
            if (SUCCEEDED(set->GetRoot({}, handles[i]))) found[i] = handles[i]->GetSpec();
        });
    }
    for (std::thread& thread : threads) thread.join();
    set.reset();  // The handles keep it.
    ASSERT_TRUE(found[0]);
    EXPECT_EQ(std::count(found, found + 8, found[0]), 8);
    const Bag bag(DataRoot::Create(std::move(handles[0])));
    DataItem* const item = FindPath(*bag->GetRootItem(), TEXT("a"));
    EXPECT_TRUE(item && item->SetText(TEXT("one")));
    EXPECT_EQ(IntOf(item), 1);
}

TEST(Template, GivesAllBackWhenMemoryRunsOut) {
    const WideString text = FromUtf8(
        R"(<?xml version="1.0"?>
           <CabTemplate><Root type="Dictionary" itemSet="s"/><ItemSet id="s"><ItemSetRef id="t"/>
           <Item id="a.b" type="String" defVal="x" valueSpec="v"/></ItemSet>
           <ItemSet id="t"><Item id="c" type="Int" valueSpec="v"/></ItemSet>
           <ValueSpec id="v"><ValueSpecNamedRef id="n"/><Range org="1" end="2"/></ValueSpec>
           <ValueSpecNamed id="n"><Case name="one" value="1"/></ValueSpecNamed></CabTemplate>)");
    {
        const SetPtr warm(TemplateSet::Create());  // The parser is loaded once.
        ASSERT_EQ(warm->LoadFromText(text.c_str()), S_OK);
    }
    const auto runs = test_support::FailEachAllocation([&](const auto& hasFailed) {
        const SetPtr set(TemplateSet::Create());
        if (!set) return;
        const HRESULT loaded = set->LoadFromBuffer(text.data(), text.size() * sizeof(WCHAR));
        EXPECT_TRUE(loaded == S_OK || (loaded == E_OUTOFMEMORY && hasFailed()));
        if (FAILED(loaded)) return;
        std::unique_ptr<TemplateHandle> handle;
        const HRESULT result = set->GetRoot({}, handle);
        EXPECT_TRUE(result == S_OK || (result == E_OUTOFMEMORY && hasFailed())) << result;
        EXPECT_EQ(SUCCEEDED(result), handle != nullptr);
        if (SUCCEEDED(result)) return;
        EXPECT_EQ(set->GetRoot({}, handle), S_OK) << "at the next try";
    });
    EXPECT_GT(runs, 20u);
}

/// The document's fenced blocks of a language, in their order.
std::vector<std::string> BlocksOf(const std::string& document, const std::string& language) {
    std::vector<std::string> blocks;
    const std::string open = "```" + language + "\n";
    for (std::size_t at = 0; (at = document.find(open, at)) != std::string::npos;) {
        at += open.size();
        blocks.push_back(document.substr(at, document.find("```", at) - at));
    }
    return blocks;
}

/// The value of a text or a number.
std::string TextOf(DataItem& item) {
    if (const WString* const text = item.GetString()) return ToUtf8(WideString(WStringView(*text)));
    double number = 0;
    EXPECT_TRUE(item.GetDouble(number));
    std::ostringstream out;
    out << number;
    return out.str();
}

TEST(Template, DoesWhatItsDocumentTells) {
    std::ifstream file(CAB_CASES "../../docs/attribute-bags.md", std::ios::binary);
    std::ostringstream whole;
    whole << file.rdbuf();
    const auto templates = BlocksOf(whole.str(), "xml");
    const auto bags = BlocksOf(whole.str(), "bag");
    const auto settings = BlocksOf(whole.str(), "set");
    ASSERT_EQ(templates.size(), 3u);
    ASSERT_TRUE(bags.size() == 3 && settings.size() == 3);
    for (std::size_t i = 0; i < 3; ++i) {
        SCOPED_TRACE(i);
        const SetPtr set(TemplateSet::Create());
        ASSERT_EQ(set->LoadFromBuffer(templates[i].data(), templates[i].size()), S_OK);
        std::unique_ptr<TemplateHandle> handle;
        ASSERT_EQ(set->GetRoot({}, handle), S_OK);
        const Bag bag(DataRoot::Create(std::move(handle)));
        BSTR text = nullptr;
        ASSERT_EQ(ToJson(bag.get(), 0, &text), S_OK);
        const platform::UniqueBstr owner(text);
        EXPECT_EQ(ToUtf8(text) + '\n', bags[i]);
        std::istringstream lines(settings[i]);
        for (std::string path, equals, value, arrow, result;
             lines >> path >> equals >> value >> arrow >> result;) {
            DataItem* const item =
                MakePath(*bag->GetRootItem(), WStringView(FromUtf8(path)), Kind::String);
            ASSERT_TRUE(item) << path;
            EXPECT_EQ(item->SetText(WStringView(FromUtf8(value))), result != "refused")
                << path << ' ' << value;
            EXPECT_TRUE(result == "refused" || TextOf(*item) == result) << path;
        }
    }
}

}  // namespace
