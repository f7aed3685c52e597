#pragma once

#include <algorithm>
#include <new>

#include "cab/json_escapes.h"
#include "foundation/wstring.h"

namespace AUX::CAB {

/// Adds to the end of a string, whose length is set once, at the end: what is not finished leaves
/// the string as it was. An operation that needs more memory than there is throws std::bad_alloc.
class JsonOutput {
public:
    explicit JsonOutput(WString& text) noexcept
        : text_(text), oldLength_(text.Length()), start_(text.Data()) {
        at_ = start_ ? start_ + oldLength_ : nullptr;
        end_ = start_ ? start_ + text.Capacity() : nullptr;
    }
    JsonOutput(const JsonOutput&) = delete;
    JsonOutput& operator=(const JsonOutput&) = delete;
    ~JsonOutput() { (void)text_.SetLength(oldLength_); }  // It has that room.

    /// Makes room for what is likely to come; it does not matter if there is none.
    void Expect(std::size_t units) noexcept {
        const std::size_t used = static_cast<std::size_t>(at_ - start_);
        if (units > static_cast<std::size_t>(end_ - at_) && units <= WString::kMaxLength - used &&
            text_.Reserve(static_cast<std::uint32_t>(used + units))) {
            Rebase(used);
        }
    }

    void Finish() noexcept { oldLength_ = static_cast<std::uint32_t>(at_ - start_); }

    /// Gives room for `units`; write them, and hand the end to Advance.
    [[nodiscard]] WCHAR* Room(std::size_t units) {
        if (units > static_cast<std::size_t>(end_ - at_)) Grow(units);
        return at_;
    }
    void Advance(WCHAR* end) noexcept { at_ = end; }

    void Put(WCHAR unit) {
        WCHAR* const at = Room(1);
        *at = unit;
        at_ = at + 1;
    }
    void Put(WStringView text) { at_ = CopyUnits(text, Room(text.size())); }
    template <std::size_t kSize>
    void PutLiteral(const WCHAR (&text)[kSize]) {
        at_ = std::copy_n(text, kSize - 1, Room(kSize - 1));
    }
    /// A line feed and tabs.
    void PutLine(std::uint32_t tabs) {
        WCHAR* const at = Room(std::size_t{tabs} + 1);
        *at = '\n';
        at_ = std::fill_n(at + 1, tabs, WCHAR{'\t'});
    }
    void PutEncoded(WStringView text) {
        constexpr std::size_t kPart = 1024;  // The room needed is many times what is used.
        for (std::size_t at = 0; at < text.size(); at += kPart) {
            const WStringView part = text.substr(at, kPart);
            at_ = EncodeEscapes(part, Room(EncodedRoom(part.size())));
        }
    }
    /// Stripped text, with its quotes.
    void PutRaw(WStringView text, bool restoresQuotes) {
        if (restoresQuotes) {
            Advance(CopyWithQuotes(text, Room(text.size())));
        } else {
            Put(text);
        }
    }

private:
    void Grow(std::size_t units) {
        const auto used = static_cast<std::size_t>(at_ - start_);
        if (units > WString::kMaxLength - used) throw std::bad_alloc();
        const std::size_t doubled = 2 * static_cast<std::size_t>(end_ - start_);
        const std::size_t wanted =
            std::min<std::size_t>(std::max(doubled, used + units), WString::kMaxLength);
        if (!text_.Reserve(static_cast<std::uint32_t>(wanted)) &&
            !text_.Reserve(static_cast<std::uint32_t>(used + units))) {
            throw std::bad_alloc();
        }
        Rebase(used);
    }
    void Rebase(std::size_t used) noexcept {
        start_ = text_.Data();
        at_ = start_ + used;
        end_ = start_ + text_.Capacity();
    }

    WString& text_;
    std::uint32_t oldLength_;
    WCHAR* start_;
    WCHAR* at_;
    WCHAR* end_;
};

}  // namespace AUX::CAB
