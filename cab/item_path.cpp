#include "cab/item_path.h"

#include "cab/data_array.h"
#include "cab/data_dictionary.h"

namespace AUX::CAB {

namespace {

struct PathPart {
    bool isIndex = false;
    WStringView name;
    std::uint32_t index = 0;
};

enum class Step : std::uint8_t { Part, End, Invalid };

class PathReader {
public:
    explicit PathReader(WStringView path) noexcept : path_(path) {}

    Step Next(PathPart& part) noexcept {
        if (at_ < path_.size() && path_[at_] == '[' && !isNameDue_) return ReadIndex(part);
        if (at_ == path_.size() && !isNameDue_) return Step::End;
        const std::size_t start = at_;
        while (at_ < path_.size() && path_[at_] != '.' && path_[at_] != '[') {
            if (path_[at_++] == ']') return Step::Invalid;
        }
        part = {false, path_.substr(start, at_ - start), 0};
        isNameDue_ = at_ < path_.size() && path_[at_] == '.';
        if (isNameDue_) ++at_;
        return Step::Part;
    }

    // An index may come first, without a name before it.
    void Start() noexcept { isNameDue_ = path_.empty() || path_[0] != '['; }

private:
    Step ReadIndex(PathPart& part) noexcept {
        std::uint64_t index = 0;
        for (++at_; at_ < path_.size() && path_[at_] != ']'; ++at_) {
            if (path_[at_] < '0' || path_[at_] > '9') return Step::Invalid;
            index = index * 10 + static_cast<std::uint64_t>(path_[at_] - '0');
            if (index > 0x7FFFFFFF) return Step::Invalid;
        }
        if (at_ == path_.size()) return Step::Invalid;
        ++at_;
        part = {true, {}, static_cast<std::uint32_t>(index)};
        if (at_ < path_.size() && path_[at_] == '.') {
            ++at_;
            isNameDue_ = true;
        } else {
            isNameDue_ = at_ < path_.size() && path_[at_] != '[';
        }
        return Step::Part;
    }

    WStringView path_;
    std::size_t at_ = 0;
    bool isNameDue_ = true;
};

bool IsValid(WStringView path) noexcept {
    if (path.empty()) return false;
    PathReader reader(path);
    reader.Start();
    PathPart part;
    std::uint32_t count = 0;
    for (;;) {
        const Step step = reader.Next(part);
        if (step != Step::Part) return step == Step::End;
        if (++count > kMaxPathParts) return false;
    }
}

DataItem* FindPart(DataItem& item, const PathPart& part) noexcept {
    if (part.isIndex) {
        DataContainer* const container = item.AsContainer();
        return container ? container->ItemAt(part.index) : nullptr;
    }
    DataDictionary* const dictionary = item.AsDictionary();
    return dictionary ? dictionary->Find(part.name) : nullptr;
}

/// \param growth  Notes the first of several that are added.
DataItem* AddPart(DataItem& item, const PathPart& part, Kind kind, Growth& growth) noexcept {
    Growth added = {&item, item.GetFlags(), -1, false, part.name};
    DataItem* made = nullptr;
    if (part.isIndex) {
        DataArray* const array = item.AsArray();
        if (!array) return nullptr;
        added.hasFilled = part.index < array->GetCount();
        added.index = added.hasFilled ? part.index : array->GetCount();
        made = array->ElementAt(part.index, kind);
    } else if (DataDictionary* const dictionary = item.AsDictionary()) {
        made = dictionary->GetOrAdd(part.name.data() ? part.name.data() : TEXT(""),
                                    static_cast<std::int64_t>(part.name.size()), kind);
    }
    if (made && !growth.parent) growth = added;
    return made;
}

}  // namespace

void Growth::Undo() noexcept {
    if (!parent) return;
    if (index >= 0 && hasFilled) {
        parent->AsArray()->EmptyAt(static_cast<std::uint32_t>(index));
    } else if (index >= 0) {
        parent->AsArray()->DropAt(static_cast<std::uint32_t>(index));
    } else {
        parent->AsDictionary()->Drop(key);
    }
    parent->SetFlags(oldFlags, ~0u);
    parent = nullptr;
}

DataItem* FindPath(DataItem& item, WStringView path) noexcept {
    if (!IsValid(path)) return nullptr;
    DataItem* found = item.Target(Kind::None);
    PathReader reader(path);
    reader.Start();
    for (PathPart part; found && reader.Next(part) == Step::Part;) found = FindPart(*found, part);
    return found;
}

DataItem* MakePath(DataItem& item, WStringView path, Kind kind, KindMatch match,
                   Growth* growth) noexcept {
    if (growth) *growth = {};
    if (!IsValid(path)) return nullptr;
    PathReader reader(path);
    reader.Start();
    DataItem* at = item.Target(Kind::None);
    Growth grown;
    PathPart part;
    PathPart following;
    for (Step step = reader.Next(part); at && step == Step::Part; part = following) {
        step = reader.Next(following);
        const bool isLast = step == Step::End;
        const Kind wanted = isLast ? kind : following.isIndex ? Kind::Array : Kind::Dictionary;
        // Nobody asked for the item itself, so that it is missing undoes nothing.
        if (isLast && kind == Kind::None) grown = {};
        DataItem* next = FindPart(*at, part);
        if (next) {
            // An index finds its way through a dictionary too.
            const bool fits =
                isLast ? match == KindMatch::AnyPresent || next->Cast(wanted)
                       : next->AsContainer() && (following.isIndex || next->AsDictionary());
            if (!fits) next = nullptr;
        } else if (wanted != Kind::None || at->AsArray()) {
            next = AddPart(*at, part, wanted, grown);
        }
        at = next;
    }
    if (!at) grown.Undo();
    if (growth) *growth = grown;
    return at;
}

}  // namespace AUX::CAB
