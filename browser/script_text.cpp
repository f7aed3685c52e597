#include "browser/script_text.h"

#include <algorithm>

#include "platform/automation.h"

namespace {

constexpr std::size_t kLongestName = 31;
constexpr AUX::WStringView kClasses = TEXT("HKCR");
constexpr AUX::WStringView kUserClasses = TEXT("HKCU\r\n{\tSoftware\r\n\t{\r\n\t\tClasses");
constexpr AUX::WStringView kUserClassesEnd = TEXT("\r\n\t}\r\n}\r\n");

constexpr bool IsSpace(WCHAR unit) noexcept {
    return unit == TEXT(' ') || unit == TEXT('\t') || unit == TEXT('\r') || unit == TEXT('\n');
}

constexpr WCHAR ToLower(WCHAR unit) noexcept {
    return unit >= TEXT('A') && unit <= TEXT('Z') ? static_cast<WCHAR>(unit | 0x20) : unit;
}

// One pass over a script. Knows how deep in braces it stands, and whether in quotes.
class Expansion {
public:
    Expansion(AUX::WStringView script, std::span<const ScriptVariable> variables, ScriptScope scope,
              AUX::WString& output) noexcept
        : script_(script), variables_(variables), scope_(scope), output_(output) {}

    HRESULT Run() noexcept {
        while (at_ < script_.size()) {
            if (script_[at_] == TEXT('%')) {
                const HRESULT result = PutVariable();
                if (FAILED(result)) return result;
            } else if (!(scope_ == ScriptScope::User ? PutForUser() : Put(1))) {
                return E_OUTOFMEMORY;
            }
        }
        return S_OK;
    }

private:
    // Copies characters of the script.
    bool Put(std::size_t count) noexcept {
        const AUX::WStringView text = script_.substr(at_, count);
        at_ += text.size();
        return output_.Append(text);
    }

    HRESULT PutVariable() noexcept {
        const std::size_t start = at_ + 1;
        const std::size_t close = script_.find(TEXT('%'), start);
        if (close == AUX::WStringView::npos) return DISP_E_EXCEPTION;
        const AUX::WStringView name = script_.substr(start, close - start);
        at_ = close + 1;
        if (name.empty()) return output_.Append(TEXT("%")) ? S_OK : E_OUTOFMEMORY;
        if (name.size() > kLongestName) return E_FAIL;
        const auto variable =
            std::find_if(variables_.begin(), variables_.end(),
                         [name](const auto& known) { return IsSameWord(known.name, name); });
        if (variable == variables_.end()) return DISP_E_EXCEPTION;
        return output_.Append(variable->value) ? S_OK : E_OUTOFMEMORY;
    }

    bool PutForUser() noexcept {
        const WCHAR unit = script_[at_];
        if (unit == TEXT('\'')) {
            // Of two quotes within quotes the second opens them anew: they stay.
            isQuoted_ = !isQuoted_;
        } else if (!isQuoted_) {
            if (depth_ == 0 && script_.substr(at_).starts_with(kClasses)) {
                isUserClasses_ = true;
                at_ += kClasses.size();
                return output_.Append(kUserClasses);
            }
            if (unit == TEXT('{')) ++depth_;
            if (unit == TEXT('}')) {
                const bool endsClasses = depth_ == 1 && isUserClasses_;
                if (depth_ > 0) --depth_;
                if (endsClasses) {
                    isUserClasses_ = false;
                    if (!output_.Append(kUserClassesEnd)) return false;
                }
            }
        }
        return Put(1);
    }

    AUX::WStringView script_;
    std::span<const ScriptVariable> variables_;
    ScriptScope scope_;
    AUX::WString& output_;
    std::size_t at_ = 0;
    std::size_t depth_ = 0;
    bool isQuoted_ = false;
    bool isUserClasses_ = false;
};

}  // namespace

bool IsSameWord(AUX::WStringView a, AUX::WStringView b) noexcept {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](WCHAR x, WCHAR y) {
               return ToLower(x) == ToLower(y);
           });
}

HRESULT ExpandScript(AUX::WStringView script, std::span<const ScriptVariable> variables,
                     ScriptScope scope, AUX::WString& output) noexcept {
    output.Clear();
    return Expansion(script, variables, scope, output).Run();
}

bool ScriptWords::Is(AUX::WStringView other) const noexcept { return IsSameWord(Word(), other); }

bool ScriptWords::Add(WCHAR unit) noexcept {
    if (length_ == kMaxLength) return false;
    word_[length_++] = unit;
    return true;
}

bool ScriptWords::ReadQuoted() noexcept {
    ++place_;
    for (; place_ < text_.size(); ++place_) {
        if (text_[place_] == TEXT('\'')) {
            ++place_;
            if (place_ == text_.size() || text_[place_] != TEXT('\'')) return true;
        }
        if (!Add(text_[place_])) return false;
    }
    return false;
}

bool ScriptWords::ReadPlain() noexcept {
    for (; place_ < text_.size() && !IsSpace(text_[place_]); ++place_) {
        if (!Add(text_[place_])) return false;
    }
    return true;
}

ScriptWords::Found ScriptWords::Next() noexcept {
    while (place_ < text_.size() && IsSpace(text_[place_])) ++place_;
    length_ = 0;
    word_[0] = 0;
    if (place_ == text_.size()) return Found::End;
    const std::size_t start = place_;
    if (text_[place_] == TEXT('\'') ? ReadQuoted() : ReadPlain()) {
        word_[length_] = 0;
        return Found::Word;
    }
    place_ = start;
    length_ = 0;
    word_[0] = 0;
    return Found::Malformed;
}
