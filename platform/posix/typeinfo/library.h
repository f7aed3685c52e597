#pragma once

/// A type library as it lies in memory after reading (docs/type-information.md has the form on
/// disk). Nothing changes after reading, so threads share it.

#include <deque>
#include <memory>
#include <span>
#include <vector>

#include "platform/posix/typeinfo/type_descriptions.h"
#include "platform/text.h"

namespace platform::types {

inline constexpr SHORT kSlotBytes = sizeof(void*);
/// References beyond the library's own types: this and a number leads to the base library.
inline constexpr HREFTYPE kBaseLibraryReference = 0x80000000;
/// The other side of a dual interface.
inline constexpr HREFTYPE kOtherSide = 0xFFFFFFFE;

/// A text that may be missing.
struct OptionalText {
    bool isThere = false;
    WideString text;
};

struct Function {
    WideString name;
    OptionalText help;
    std::vector<WideString> parameterNames;
    std::vector<ELEMDESC> parameters;
    /// As the interface has it; of a dispatch interface as that has it.
    FUNCDESC description{};
};

struct Variable {
    WideString name;
    OptionalText help;
    VARIANT value{};
    VARDESC description{};
};

struct Implemented {
    HREFTYPE reference;
    INT flags;
};

struct Type {
    TYPEKIND kind{};
    GUID id{};
    WORD flags = 0;
    WORD major = 0;
    WORD minor = 0;
    /// Entries of an interface's table, with those of its bases.
    WORD slots = 0;
    WideString name;
    OptionalText help;
    TYPEDESC alias{};
    std::vector<Implemented> implements;
    std::vector<Variable> variables;
    std::vector<Function> functions;

    [[nodiscard]] bool IsDual() const { return (flags & TYPEFLAG_FDUAL) != 0; }
};

/// Owns all that its types' descriptions point to.
struct Library {
    Library() = default;
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;
    ~Library();

    GUID id{};
    WORD major = 0;
    WORD minor = 0;
    LCID language = 0;
    WORD flags = 0;
    WideString name;
    OptionalText help;
    std::vector<Type> types;
    std::deque<TYPEDESC> targets;
    std::deque<PARAMDESCEX> defaults;
};

/// Reads a library; null if the bytes are none or are damaged.
[[nodiscard]] std::shared_ptr<const Library> ReadLibrary(std::span<const std::byte> bytes);

/// The library of IUnknown and IDispatch.
const std::shared_ptr<const Library>& BaseLibrary();

/// The type of a reference in `library`, or null; `library` becomes the one that has it.
const Type* Resolve(std::shared_ptr<const Library>& library, HREFTYPE reference);

}  // namespace platform::types
