#pragma once

#include <cstdint>

#include "platform/html.h"

/// The height of a page's content: of its root element or of its body, whichever is higher.
/// \param document  May be null.
/// \return pixels, never 0: 800 when neither height can be had.
[[nodiscard]] std::uint32_t MeasureDocumentHeight(IHTMLDocument2* document) noexcept;
