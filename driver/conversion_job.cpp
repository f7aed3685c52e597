#include "driver/conversion_job.h"

#include "driver/job_block.h"
#include "foundation/dyn_mem_stream.h"
#include "foundation/file_stream.h"
#include "foundation/paths.h"
#include "foundation/temp_location.h"

void ConversionJob::Reset() noexcept {
    SharedBlock.reset();
    Security.Reset();
    RunApp.Reset();
    NameFlag = false;
    AskOutputFile = false;
    SuggestedName.Free();
    OptionFlag = false;
    OptionValue = 0;
    ExtraFlag = false;
    ExtraText1.Free();
    ExtraText2.Free();
    ExtraText3.Free();
    for (JobItem* item : Items) delete item;
    Items.Free();
}

JobItem* ConversionJob::AddItem() noexcept {
    std::unique_ptr<JobItem> item(new (std::nothrow) JobItem);
    if (!item || !Items.Add(item.get())) return nullptr;
    return item.release();
}

void ConversionJob::AttachSettings(SharedRef<SecuritySettings> security,
                                   SharedRef<RunAppSettings> runApp) noexcept {
    Security = std::move(security);
    RunApp = std::move(runApp);
}

bool ConversionJob::Serialise(AUX::Stream& stream) const noexcept {
    return WriteJobBlock(*this, stream);
}

bool ConversionJob::SerialiseInto(AUX::DynMemStream& memory) const noexcept {
    // Growing by the block's whole size makes the first reservation the only one: a long selection
    // is copied once, and nothing is reserved beyond it.
    const std::uint64_t size = MeasureJobBlock(*this);
    if (size > 0xFFFFFFFF) return false;
    return !AUX::IsFailure(memory.Open(0, static_cast<std::int64_t>(size))) && Serialise(memory);
}

bool ConversionJob::PublishShared() noexcept {
    if (!SharedBlock) SharedBlock.reset(new (std::nothrow) SharedJobBlock);
    if (!SharedBlock) return false;
    AUX::DynMemStream memory;
    if (!SerialiseInto(memory)) {
        SharedBlock->Close();  // What an earlier call published is not this job.
        return false;
    }
    return SharedBlock->Publish(memory.GetData(), memory.GetSize());
}

void ConversionJob::SharedName(AUX::WString& output) const noexcept {
    output.Clear();
    if (SharedBlock && SharedBlock->IsOpen()) (void)output.Assign(kSharedBlockName);
}

bool ConversionJob::WriteToFile(AUX::WString& path) const noexcept {
    path.Clear();
    AUX::WString folder;
    AUX::WString file;
    if (!AUX::GetTempFolder(folder)) return false;
    (void)AUX::CreateDirectoryTree(folder.Text());  // Opening the file tells if it cannot be had.
    if (!AUX::MakeUniqueFileName(folder, TEXT("qvdstg_"), TEXT("bin"), file)) return false;
    AUX::DynMemStream memory;
    if (!SerialiseInto(memory)) return false;
    AUX::FileStream stream;
    if (AUX::IsFailure(stream.Open(file.Text(), CREATE_ALWAYS, AUX::kAccessRead | AUX::kAccessWrite,
                                   FILE_SHARE_READ, FILE_ATTRIBUTE_NORMAL))) {
        return false;
    }
    std::int64_t written = 0;  // A short write is a failure of the stream's.
    if (AUX::IsFailure(stream.Write(memory.GetData(), memory.GetSize(), written))) return false;
    (void)stream.Close();  // The bytes are in the file; there is nothing left to cut off.
    path = std::move(file);
    return true;
}
