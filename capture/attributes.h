#pragma once

#include <cstddef>
#include <optional>

#include "capture/text_splicer.h"
#include "foundation/wstring_view.h"

/// Finds the quoted value of an attribute in the text of one tag. Quoted stretches are passed over
/// while the name is sought, and ASCII case is ignored. The first place where the name stands
/// counts, even as the end of a longer name, unless the letters before it began the name too
/// ("hhref"): when no '=' and quotes follow there, the attribute is not found. An unquoted value is
/// passed over to the next quote in the tag.
/// \param end  The tag's '>', or the place behind the text.
/// \return the value as it stands, without its quotes: a part of the text.
[[nodiscard]] std::optional<AUX::WStringView> FindAttribute(const WCHAR* begin, const WCHAR* end,
                                                            const WCHAR* name,
                                                            std::size_t nameLength) noexcept;

/// Puts a new text, encoded, in place of a quoted value of the splicer's source. The new quotes are
/// double ones, whatever stood there.
/// \param valueStart  The character behind the opening quote, which the cursor has not passed.
void ReplaceQuotedValue(TextSplicer& splicer, const WCHAR* valueStart, std::size_t valueLength,
                        AUX::WStringView newText) noexcept;
