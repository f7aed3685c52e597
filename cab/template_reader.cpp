#include "cab/template_reader.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

#include "cab/exact_number.h"

namespace AUX::CAB {
namespace {

[[noreturn]] void Refuse() { throw std::invalid_argument("Invalid CAB XML template"); }

/// "1" or "true", "0" or "false"; any other text is no answer.
bool ReadFlag(WStringView text) noexcept { return text == TEXT("1") || text == TEXT("true"); }

/// A number, or 0 for one out of range.
template <class Number>
Number ReadNumber(WStringView text) noexcept {
    Number number = 0;
    (void)ParseNumber(text, number);
    return number;
}

/// The end of a range; one that is not given, or beyond all numbers, is infinite.
double ReadLimit(WStringView text, double unlimited) noexcept {
    double limit = 0;
    if (!text.empty() && ParseNumber(text, limit)) return limit;
    if (text.empty()) return unlimited;
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    return text.front() == '-' ? -kInfinity : kInfinity;
}

/// Looks a key up in the sets that a set includes, the first set first.
class IncludedKey {
public:
    explicit IncludedKey(WStringView key) noexcept : key_(key) {}

    /// \return null if no included set declares it. \throw std::bad_alloc
    [[nodiscard]] const ItemSpec* Find(const ItemSpec* entries, std::int64_t count) {
        for (std::int64_t i = 0; i < count && (entries[i].flags & SpecInclude); ++i) {
            const ItemSpec& include = entries[i];
            // One that is included by many is searched once.
            if (!searched_.emplace(include.entries, include.count).second) continue;
            for (std::int64_t k = 0; k < include.count; ++k) {
                const ItemSpec& entry = include.entries[k];
                if (entry.name && entry.name == key_) return &entry;
            }
            if (const ItemSpec* found = Find(include.entries, include.count)) return found;
        }
        return nullptr;
    }

private:
    using Place = std::pair<const ItemSpec*, std::int64_t>;

    const WStringView key_;
    std::set<Place, std::less<>, LibraryAllocator<Place>> searched_;
};

ItemSpec Include(const ItemSpec* entries, std::int64_t count) noexcept {
    ItemSpec include{};
    include.kind = Kind::Dictionary;
    include.flags = SpecInclude;
    include.count = count;
    include.entries = entries;
    return include;
}

/// Gives a container the entries of a complete set, or an array its element's declaration. Nothing
/// points into an empty one.
void ReferTo(const SpecSet& set, ItemSpec& spec) noexcept {
    if (set.Count() == 0) return;
    if (spec.kind == Kind::Array) {
        spec.entries = set.first;
    } else {
        spec.entries = set.entries.data();
        spec.count = set.Count();
    }
}

/// One level deeper while it lives.
class Descent {
public:
    explicit Descent(int& depth) : depth_(depth) {
        if (depth_ == TemplateReader::kMaxDepth) Refuse();
        ++depth_;
    }
    ~Descent() { --depth_; }
    Descent(const Descent&) = delete;
    Descent& operator=(const Descent&) = delete;

private:
    int& depth_;
};

}  // namespace

Kind KindOfName(WStringView name) noexcept {
    constexpr struct {
        WStringView name;
        Kind kind;
    } kNames[] = {
        {TEXT("Bool"), Kind::Bool},       {TEXT("Int"), Kind::Int},
        {TEXT("Int64"), Kind::Int64},     {TEXT("Double"), Kind::Double},
        {TEXT("String"), Kind::String},   {TEXT("Stream"), Kind::Stream},
        {TEXT("IUnknown"), Kind::Object}, {TEXT("Container"), Kind::Container},
        {TEXT("Array"), Kind::Array},     {TEXT("Dictionary"), Kind::Dictionary},
    };
    constexpr WStringView kPrefix = TEXT("dt_");
    if (name.starts_with(kPrefix)) name = name.substr(kPrefix.size());
    for (const auto& row : kNames) {
        if (row.name == name) return row.kind;
    }
    return Kind::None;
}

CompiledTemplate TemplateReader::Read(WStringView name) {
    const ElementPtr root = FindChild(element_, TEXT("Root"), name);
    if (!root) Refuse();
    const SpecSet* open = nullptr;  // When the root has been read, no set is open.
    result_.root = ReadItem(*root.Get(), AttributeOf(*root.Get(), TEXT("id")), open);
    CloseReferences();
    const ItemSpec& spec = result_.root;
    if (spec.kind != Kind::Dictionary || !spec.entries || spec.count == 0) Refuse();
    if (!CanBeBuilt(result_)) Refuse();
    return std::move(result_);
}

ItemSpec TemplateReader::ReadItem(IXMLDOMElement& element, WStringView name, const SpecSet*& open) {
    open = nullptr;
    ItemSpec spec{};
    spec.kind = KindOfName(AttributeOf(element, TEXT("type")));
    if (spec.kind == Kind::None) return {};
    spec.name = result_.Intern(name).data();
    if (ReadFlag(AttributeOf(element, TEXT("temp")))) spec.flags |= SpecTemp;
    if (ReadFlag(AttributeOf(element, TEXT("loose")))) spec.flags |= SpecLoose;
    if (IsContainer(spec.kind)) {
        const KeyText id = AttributeOf(element, TEXT("itemSet"));
        const SpecSet* const set = id.empty() ? nullptr : FindSet(id);
        if (set && !set->isComplete) {
            open = set;
        } else if (set) {
            ReferTo(*set, spec);
        }
    } else {
        ReadDefault(element, spec);
        const KeyText values = AttributeOf(element, TEXT("valueSpec"));
        spec.values = values.empty() ? nullptr : FindValues(values);
    }
    return spec;
}

void TemplateReader::ReadDefault(IXMLDOMElement& element, ItemSpec& spec) {
    const KeyText text = AttributeOf(element, TEXT("defVal"));
    switch (spec.kind) {
        case Kind::Bool:
            spec.defaultBool = ReadFlag(text);
            break;
        case Kind::Int:
            spec.defaultInt = ReadNumber<std::int32_t>(text);
            break;
        case Kind::Int64:
            spec.defaultInt64 = ReadNumber<std::int64_t>(text);
            break;
        case Kind::Double:
            spec.defaultDouble = ReadNumber<double>(text);
            break;
        case Kind::String:
            spec.defaultString = text.empty() ? nullptr : result_.Intern(text).data();
            break;
        default:
            break;
    }
}

const SpecSet* TemplateReader::FindSet(WStringView id) {
    if (const auto known = result_.sets.find(id); known != result_.sets.end()) {
        return &known->second;
    }
    const ElementPtr element = FindChild(element_, TEXT("ItemSet"), id);
    if (!element) return nullptr;
    const Descent descent(depth_);
    // Entered first: one that refers to itself finds what it has so far.
    SpecSet& set = result_.sets[KeyText(id)];
    ReadSet(*element.Get(), set);
    return &set;
}

void TemplateReader::ReadSet(IXMLDOMElement& element, SpecSet& set) {
    const Vector<ElementPtr> references = ChildrenNamed(element, TEXT("ItemSetRef"));
    const Vector<ElementPtr> items = ChildrenNamed(element, TEXT("Item"));
    // Others may point to the entries from here on. Of dotted keys some share an entry.
    set.entries.reserve(references.size() + items.size() + 1);
    for (const ElementPtr& reference : references) {
        const KeyText id = AttributeOf(*reference.Get(), TEXT("id"));
        const SpecSet* const included = id.empty() ? nullptr : FindSet(id);
        if (!included) continue;
        set.entries.push_back(Include(included->entries.data(), included->Count()));
        if (!set.first) set.first = included->first;
    }
    for (const ElementPtr& item : items) AddItem(*item.Get(), set);
    Complete(set);
}

void TemplateReader::AddItem(IXMLDOMElement& element, SpecSet& set) {
    const KeyText id = AttributeOf(element, TEXT("id"));
    SpecSet* place = &set;
    WStringView rest = id;
    int segments = 0;
    for (std::size_t dot; (dot = rest.find('.')) != WStringView::npos;) {
        if (++segments > kMaxDepth) Refuse();
        place = StepInto(*place, rest.substr(0, dot));
        if (!place) return;  // The key is taken by something else.
        rest = rest.substr(dot + 1);
    }
    const SpecSet* open = nullptr;
    const ItemSpec spec = ReadItem(element, rest, open);
    if (open) openReferences_.push_back({place, place->entries.size(), open});
    place->entries.push_back(spec);
}

SpecSet* TemplateReader::StepInto(SpecSet& set, WStringView key) {
    for (std::size_t i = 0; i < set.entries.size(); ++i) {
        const ItemSpec& entry = set.entries[i];
        if (!entry.name || entry.name != key) continue;
        for (const SpecSet::Nested& nested : set.nested) {
            if (nested.index == i) return nested.set;
        }
        return nullptr;
    }
    SpecSet& inner = result_.AddAnonymousSet();
    const ItemSpec* const included = IncludedKey(key).Find(set.entries.data(), set.Count());
    if (included && included->kind == Kind::Dictionary && included->entries) {
        inner.entries.push_back(Include(included->entries, included->count));
    }
    ItemSpec entry{};
    entry.name = result_.Intern(key).data();
    entry.kind = Kind::Dictionary;
    entry.count = -1;
    set.nested.push_back({set.entries.size(), &inner});
    set.entries.push_back(entry);
    return &inner;
}

void TemplateReader::Complete(SpecSet& set) {
    for (const SpecSet::Nested& nested : set.nested) {
        Complete(*nested.set);
        nested.set->entries.shrink_to_fit();
        set.entries[nested.index].entries = nested.set->entries.data();
        set.entries[nested.index].count = nested.set->Count();
    }
    set.nested.clear();
    const auto own = std::ranges::find_if(
        set.entries, [](const ItemSpec& entry) { return !(entry.flags & SpecInclude); });
    if (!set.first && own != set.entries.end()) set.first = &*own;
    set.entries.push_back({});
    set.isComplete = true;
}

void TemplateReader::CloseReferences() noexcept {
    for (const OpenReference& reference : openReferences_) {
        ReferTo(*reference.target, reference.holder->entries[reference.index]);
    }
}

const ValueSpec* TemplateReader::FindValues(WStringView id) {
    const auto specOf = [](const ValueBlock& block) {
        return reinterpret_cast<const ValueSpec*>(block.data());
    };
    if (const auto known = result_.values.find(id); known != result_.values.end()) {
        return specOf(known->second);
    }
    const ElementPtr element = FindChild(element_, TEXT("ValueSpec"), id);
    if (!element) return nullptr;

    ValueSpec head{};
    for (const ElementPtr& named : ChildrenNamed(*element.Get(), TEXT("ValueSpecNamedRef"))) {
        NamedTableWord* const table = FindTable(AttributeOf(*named.Get(), TEXT("id")));
        if (table) head.names = table;
    }
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    ValueBlock inclusive(1);  // The head's place.
    ValueBlock exclusive;
    for (const ElementPtr& range : ChildrenNamed(*element.Get(), TEXT("Range"))) {
        const NumberRange limits = {ReadLimit(AttributeOf(*range.Get(), TEXT("org")), -kInfinity),
                                    ReadLimit(AttributeOf(*range.Get(), TEXT("end")), kInfinity)};
        const bool isExclusive = AttributeOf(*range.Get(), TEXT("type")) == TEXT("exclusive");
        (isExclusive ? exclusive : inclusive).push_back(limits);
    }
    const bool hasInclusive = inclusive.size() > 1;
    head.list = hasInclusive        ? RangeList::Inclusive
                : exclusive.empty() ? RangeList::None
                                    : RangeList::OnlyExclusive;
    if (hasInclusive && !exclusive.empty()) inclusive.push_back(kRangeSeparator);
    inclusive.insert(inclusive.end(), exclusive.begin(), exclusive.end());
    inclusive.push_back(kRangeEnd);
    inclusive.shrink_to_fit();
    static_assert(sizeof(ValueSpec) == sizeof(NumberRange));
    new (inclusive.data()) ValueSpec(head);
    return specOf(result_.values.emplace(KeyText(id), std::move(inclusive)).first->second);
}

NamedTableWord* TemplateReader::FindTable(WStringView id) {
    if (const auto known = result_.tables.find(id); known != result_.tables.end()) {
        return &known->second.word;
    }
    const ElementPtr element = FindChild(element_, TEXT("ValueSpecNamed"), id);
    if (!element) return FindStaticTable(id);
    OwnTable& own = result_.tables[KeyText(id)];
    auto* const table = new (std::nothrow) NamedTable;
    if (!table) throw std::bad_alloc();
    own.word = WordFor(table);
    for (const ElementPtr& row : ChildrenNamed(*element.Get(), TEXT("Case"))) {
        const KeyText name = AttributeOf(*row.Get(), TEXT("name"));
        const KeyText value = AttributeOf(*row.Get(), TEXT("value"));
        if (!table->Add(name, ReadNumber<double>(value))) throw std::bad_alloc();
    }
    return &own.word;
}

}  // namespace AUX::CAB
