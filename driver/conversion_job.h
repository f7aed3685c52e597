#pragma once

#include <cstdint>
#include <memory>

#include "driver/job_item.h"
#include "driver/shared_job_block.h"
#include "settings/run_app_settings.h"
#include "settings/security_settings.h"

namespace AUX {
class DynMemStream;
class Stream;
}  // namespace AUX

/// What a conversion needs beyond the numbers on the command line, and its way to the converter.
/// One for each browser tab; belongs to the tab's user-interface thread. Owns its items; shares
/// the settings' records. A false result has no message; the job itself stays as it was.
class ConversionJob {
public:
    AUX::Array<JobItem*> Items;
    SharedRef<SecuritySettings> Security;
    SharedRef<RunAppSettings> RunApp;
    bool NameFlag = false;
    bool AskOutputFile = false;  ///< The converter has to ask for the output file.
    AUX::WString SuggestedName;  ///< Travels only with NameFlag or AskOutputFile.
    bool OptionFlag = false;
    std::uint64_t OptionValue = 0;
    bool ExtraFlag = false;
    AUX::WString ExtraText1;  ///< The extra texts travel only with ExtraFlag.
    AUX::WString ExtraText2;
    AUX::WString ExtraText3;
    std::unique_ptr<SharedJobBlock> SharedBlock;  ///< Null until the first PublishShared.

    ConversionJob() noexcept = default;
    ConversionJob(const ConversionJob&) = delete;
    ConversionJob& operator=(const ConversionJob&) = delete;
    ~ConversionJob() { Reset(); }

    /// Empties the job and closes its shared block. Removes no files.
    void Reset() noexcept;

    /// Appends an empty item, owned by the job. \return null when memory runs out.
    [[nodiscard]] JobItem* AddItem() noexcept;

    /// Shares the records; null ones, too.
    void AttachSettings(SharedRef<SecuritySettings> security,
                        SharedRef<RunAppSettings> runApp) noexcept;

    /// Writes the job's block from the start of an open stream that can be written, and leaves the
    /// stream at its end. The form of the block is told in docs/converter-interface.md.
    /// \return false if the stream is not at its start, a write fails or is cut short, the stream
    ///         is longer than the block afterwards, or the size does not fit 32 bits. The stream
    ///         may hold a part of the block then.
    [[nodiscard]] bool Serialise(AUX::Stream& stream) const noexcept;

    /// Publishes the block in shared memory, in place of the one published before. The block stays
    /// open until Reset, the next call, or the end of the job.
    /// \return false, with no block open, when a part of it fails.
    [[nodiscard]] bool PublishShared() noexcept;

    /// Gives the name of the shared block; empty when none is open, or memory runs out.
    void SharedName(AUX::WString& output) const noexcept;

    /// Writes the block into a new file of the temporary folder. A file whose writing failed stays.
    /// \param path  Gets the file's path; empty after a failure.
    [[nodiscard]] bool WriteToFile(AUX::WString& path) const noexcept;

private:
    [[nodiscard]] bool SerialiseInto(AUX::DynMemStream& memory) const noexcept;
};
