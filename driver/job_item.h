#pragma once

#include <cstdint>

#include "foundation/array.h"
#include "foundation/wstring.h"
#include "settings/shared_record.h"
#include "settings/shared_ref.h"

/// Further texts about a document. The add-in makes none; the block has room for them.
struct ItemDetails final : SharedRecord {
    AUX::WString FirstTexts[7];
    std::uint64_t Number = 0;
    AUX::WString LastTexts[3];
};

/// One document of a job. Owns its attachments' texts.
struct JobItem final : AUX::Allocated {
    AUX::WString Source;         ///< The page's address, or the path of its copy.
    AUX::WString SelectionHtml;  ///< Empty unless the selection is converted.
    AUX::WString ItemText;
    AUX::WString OutputFile;                ///< Empty when the converter has to ask.
    AUX::Array<AUX::WString*> Attachments;  ///< Paths, each made with `new`.
    bool AttachmentsAreTemporary = false;
    bool SourceIsTemporary = false;  ///< Source is a copy in the temporary folder.
    SharedRef<ItemDetails> Details;

    JobItem() noexcept = default;
    JobItem(const JobItem&) = delete;
    JobItem& operator=(const JobItem&) = delete;
    ~JobItem() {
        for (AUX::WString* path : Attachments) delete path;
    }
};
