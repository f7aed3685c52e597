#pragma once

#include <functional>
#include <optional>
#include <string>

#include "converter/page_printer.h"
#include "converter/pdf_protection.h"

namespace converter {

enum class Compression { Low, Medium, High };

/// What a finished PDF is to be.
struct PdfWish {
    Sheet sheet;
    bool links = true;  // false: links lead nowhere
    int minor = 4;      // of version 1.x
    Compression compression = Compression::Medium;
    std::optional<Protection> protection;
};

/// Makes the printed bytes what was wished for, and checks the result by reading it back: whether
/// it has its pages, its version and all of the protection. The exact size of the sheet is set,
/// which the browser cuts to 1/300 inch; the document's information stays.
///
/// Compression: low keeps the streams as the browser packed them; medium also packs the document's
/// objects, where the version has that (1.5); high packs everything anew as small as it goes.
///
/// A version too low for the cipher is raised, with a note.
Result<std::string> FinishPdf(const std::string& printed, const PdfWish& wish,
                              const std::function<void(const std::string&)>& note);

/// Reads a finished PDF back. \return what differs from the wish.
Outcome CheckPdf(const std::string& pdf, const PdfWish& wish, std::size_t pages);

}  // namespace converter
