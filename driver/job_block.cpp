#include "driver/job_block.h"

#include <bit>
#include <cstring>

#include "settings/password_text.h"

// Numbers and texts go out as they lie in memory.
static_assert(std::endian::native == std::endian::little);

namespace {

constexpr std::uint8_t kFormatVersion = 12;
constexpr std::uint64_t kMaxBlockSize = 0xFFFFFFFF;

/// Counts bytes and writes none.
class SizeSink {
public:
    bool Write(const void*, std::uint64_t bytes) noexcept {
        size_ += bytes;
        return true;
    }
    bool WritePassword(const AUX::WString& password) noexcept {
        return Write(nullptr, sizeof(std::uint32_t) + EncodedPasswordSize(password.Length()));
    }
    [[nodiscard]] std::uint64_t Size() const noexcept { return size_; }

private:
    std::uint64_t size_ = 0;
};

class StreamSink {
public:
    explicit StreamSink(AUX::Stream& stream) noexcept : stream_(stream) {}

    bool Write(const void* data, std::uint64_t bytes) noexcept {
        const auto length = static_cast<std::int64_t>(bytes);
        std::int64_t written = 0;
        if (AUX::IsFailure(stream_.Write(data, length, written)) || written != length) return false;
        size_ += bytes;
        return true;
    }
    bool WritePassword(const AUX::WString& password) noexcept {
        AUX::AString text;
        if (!EncodePasswordText(password, text)) return false;
        const std::uint32_t count = text.Length();
        const bool done = Write(&count, sizeof(count)) && (count == 0 || Write(text.Text(), count));
        WipeText(text);
        return done;
    }
    [[nodiscard]] std::uint64_t Size() const noexcept { return size_; }

private:
    AUX::Stream& stream_;
    std::uint64_t size_ = 0;
};

/// Hands the job's fields to a sink in the block's order. After a failed write nothing more goes
/// out.
template <class Sink>
class BlockWriter {
public:
    explicit BlockWriter(Sink& sink) noexcept : sink_(sink) {}

    [[nodiscard]] bool WriteBlock(const ConversionJob& job) noexcept {
        Number(std::uint32_t{0});  // The block's size, which is known at the end.
        Number(kFormatVersion);
        Security(job.Security.Get());
        RunApp(job.RunApp.Get());
        Flag(job.NameFlag);
        Flag(job.AskOutputFile);
        if (job.NameFlag || job.AskOutputFile) Text(job.SuggestedName);
        Flag(job.OptionFlag);
        Number(job.OptionValue);
        Flag(job.ExtraFlag);
        if (job.ExtraFlag) {
            Text(job.ExtraText1);
            Text(job.ExtraText2);
            Text(job.ExtraText3);
        }
        Number(job.Items.Count());
        for (const JobItem* item : job.Items) Item(*item);
        return isGood_;
    }

private:
    void Security(const SecuritySettings* security) noexcept {
        const bool isPresent = security && security->Enabled;
        Flag(isPresent);
        if (!isPresent) return;
        Flag(security->HasUserPassword);
        Flag(security->HasOwnerPassword);
        isGood_ = isGood_ && sink_.WritePassword(security->UserPassword);
        isGood_ = isGood_ && sink_.WritePassword(security->OwnerPassword);
        Number(security->Type);
        Flag(security->Allow40Printing);
        Flag(security->Allow40Changing);
        Flag(security->Allow40Copying);
        Flag(security->Allow40Comments);
        Flag(security->Allow128ContentAccess);
        Flag(security->Allow128Copying);
        Number(security->Changes128);
        Number(security->Printing128);
        Flag(security->EncryptMetadata128);
    }

    void RunApp(const RunAppSettings* runApp) noexcept {
        Flag(runApp != nullptr);
        if (!runApp) return;
        Flag(runApp->UseCustomApp);
        Text(runApp->AppPath);
        Text(runApp->AppParameters);
    }

    void Item(const JobItem& item) noexcept {
        Text(item.Source);
        Text(item.SelectionHtml);
        Text(item.ItemText);
        Text(item.OutputFile);
        Number(item.Attachments.Count());
        for (const AUX::WString* path : item.Attachments) Text(*path);
        Flag(item.SourceIsTemporary);
        Flag(item.AttachmentsAreTemporary);
        Details(item.Details.Get());
    }

    void Details(const ItemDetails* details) noexcept {
        Flag(details != nullptr);
        if (!details) return;
        for (const AUX::WString& text : details->FirstTexts) Text(text);
        for (const AUX::WString& text : details->LastTexts) Text(text);
        Number(details->Number);  // Behind all the texts, where the record has it among them.
    }

    void Flag(bool flag) noexcept { Number(static_cast<std::uint8_t>(flag ? 1 : 0)); }

    template <class Integer>
    void Number(Integer number) noexcept {
        Bytes(&number, sizeof(number));
    }

    void Text(const AUX::WString& text) noexcept {
        Number(text.Length());
        if (!text.IsEmpty()) Bytes(text.Text(), std::uint64_t{text.Length()} * sizeof(WCHAR));
    }

    void Bytes(const void* data, std::uint64_t count) noexcept {
        isGood_ = isGood_ && sink_.Write(data, count);
    }

    Sink& sink_;
    bool isGood_ = true;
};

}  // namespace

std::uint64_t MeasureJobBlock(const ConversionJob& job) noexcept {
    SizeSink sink;
    (void)BlockWriter(sink).WriteBlock(job);  // Counting cannot fail.
    return sink.Size();
}

bool WriteJobBlock(const ConversionJob& job, AUX::Stream& stream) noexcept {
    if (!stream.IsOpen() || stream.GetPosition() != 0) return false;
    StreamSink sink(stream);
    if (!BlockWriter(sink).WriteBlock(job)) return false;
    if (sink.Size() > kMaxBlockSize) return false;
    if (stream.GetSize() != static_cast<std::int64_t>(sink.Size())) return false;
    const auto blockSize = static_cast<std::uint32_t>(sink.Size());
    if (void* const data = stream.GetData()) {
        std::memcpy(data, &blockSize, sizeof(blockSize));
        return true;
    }
    // A file's bytes do not lie in memory.
    return !AUX::IsFailure(stream.Rewind()) && sink.Write(&blockSize, sizeof(blockSize)) &&
           !AUX::IsFailure(stream.Seek(AUX::SeekMode::End, 0));
}
