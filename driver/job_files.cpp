#include "driver/job_files.h"

#include "foundation/file_removal.h"
#include "platform/shell.h"

namespace {

constexpr AUX::WStringView kPageEnding = TEXT(".html");

/// Deletes the folder of this name, if there is one. \return whether there was.
bool DeletePartsFolder(const AUX::WString& stem, AUX::WStringView ending) noexcept {
    AUX::WString folder;
    if (!folder.Assign(stem) || !folder.Append(ending)) return false;
    if (!PathFileExistsW(folder.Text())) return false;
    (void)AUX::DeleteFolderTree(folder.Text());  // Nobody could act on the error.
    return true;
}

}  // namespace

void DeleteCapturedPage(const AUX::WString& path) noexcept {
    if (path.IsEmpty()) return;
    (void)AUX::DeleteFileForced(path.Text());  // The folder goes all the same.

    const AUX::WStringView text(path);
    const std::size_t ending = text.find(kPageEnding);
    AUX::WString stem;
    if (!stem.Assign(text.substr(0, ending))) return;
    if (ending != AUX::WStringView::npos &&
        !stem.Append(text.substr(ending + kPageEnding.size()))) {
        return;
    }
    if (DeletePartsFolder(stem, TEXT("_files"))) return;
    (void)DeletePartsFolder(stem, TEXT(".files"));
}

void RemoveJobFiles(const ConversionJob& job) noexcept {
    for (const JobItem* item : job.Items) {
        if (item->AttachmentsAreTemporary) {
            for (const AUX::WString* path : item->Attachments) {
                (void)AUX::DeleteFileForced(path->Text());
            }
        }
        if (item->SourceIsTemporary) DeleteCapturedPage(item->Source);
    }
}
