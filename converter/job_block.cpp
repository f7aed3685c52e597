#include "converter/job_block.h"

#include <string>

#include "converter/password_text.h"

namespace converter {
namespace {

using platform::WideString;

constexpr std::size_t kLeastItemBytes = 23;  // four empty texts, an empty list, three flags

/// Reads field after field; the first fault stays and ends all further reading.
class BlockReader {
public:
    explicit BlockReader(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

    bool Failed() const { return !fault_.empty(); }
    Error GetError() const { return Error{fault_}; }
    std::size_t Left() const { return bytes_.size() - at_; }

    void Fail(const char* field, const std::string& why) {
        if (Failed()) return;
        fault_ = "The job is malformed: " + std::string(field) + " at byte " +
                 std::to_string(fieldAt_) + " " + why + ".";
    }

    std::uint64_t Number(const char* field, std::size_t bytes) {
        fieldAt_ = at_;
        if (!Need(field, bytes)) return 0;
        std::uint64_t value = 0;
        for (std::size_t k = 0; k < bytes; ++k) value |= std::uint64_t{bytes_[at_ + k]} << (8 * k);
        at_ += bytes;
        return value;
    }

    std::uint32_t U32(const char* field) { return static_cast<std::uint32_t>(Number(field, 4)); }

    bool Flag(const char* field) {
        const std::uint64_t value = Number(field, 1);
        if (value > 1) Fail(field, "is " + std::to_string(value) + ", neither 0 nor 1");
        return value == 1;
    }

    /// A row of a list that ends with `last`.
    template <class Row>
    Row RowOf(const char* field, Row last) {
        const std::uint32_t value = U32(field);
        if (value > static_cast<std::uint32_t>(last)) {
            Fail(field, "is " + std::to_string(value) + ", which is unknown");
            return last;
        }
        return static_cast<Row>(value);
    }

    /// A text whose reader would stop at a zero: a path, an address, a name.
    WideString Text(const char* field) {
        WideString text = AnyText(field);
        if (text.find(WCHAR{0}) != WideString::npos) Fail(field, "holds a zero character");
        return text;
    }

    WideString AnyText(const char* field) {
        const std::uint32_t units = U32(field);
        if (Failed() || !NeedMany(field, units, 2)) return {};
        WideString text(units, WCHAR{0});
        for (WCHAR& unit : text) {
            unit = static_cast<WCHAR>(bytes_[at_] | bytes_[at_ + 1] << 8);
            at_ += 2;
        }
        return text;
    }

    WideString Password(const char* field) {
        const std::uint32_t count = U32(field);
        if (Failed() || !NeedMany(field, count, 1)) return {};
        const std::string text(bytes_.begin() + static_cast<std::ptrdiff_t>(at_),
                               bytes_.begin() + static_cast<std::ptrdiff_t>(at_ + count));
        at_ += count;
        const Result<WideString> password = ReadPasswordText(text);
        if (!password) {
            Fail(field, "is not base64 text of UTF-16 characters");
            return {};
        }
        return *password;
    }

    /// A count of things of at least `leastBytes` each.
    std::uint32_t Count(const char* field, std::size_t leastBytes) {
        const std::uint32_t count = U32(field);
        return Failed() || !NeedMany(field, count, leastBytes) ? 0 : count;
    }

private:
    bool Need(const char* field, std::size_t bytes) {
        if (Failed()) return false;
        if (bytes <= Left()) return true;
        Fail(field, "lies behind the end");
        return false;
    }

    bool NeedMany(const char* field, std::uint32_t count, std::size_t bytes) {
        if (count <= Left() / bytes) return true;
        Fail(field, "announces " + std::to_string(count) + ", more than the block holds");
        return false;
    }

    std::span<const std::uint8_t> bytes_;
    std::size_t at_ = 0;
    std::size_t fieldAt_ = 0;
    std::string fault_;
};

// Fields are read in the order of their lines.

Security ReadSecurity(BlockReader& in) {
    Security security;
    security.hasUserPassword = in.Flag("HasUserPassword");
    security.hasOwnerPassword = in.Flag("HasOwnerPassword");
    security.userPassword = in.Password("UserPassword");
    security.ownerPassword = in.Password("OwnerPassword");
    security.type = in.RowOf("Type", Encryption::AesBits256R6);
    security.allow40Printing = in.Flag("Allow40Printing");
    security.allow40Changing = in.Flag("Allow40Changing");
    security.allow40Copying = in.Flag("Allow40Copying");
    security.allow40Comments = in.Flag("Allow40Comments");
    security.allow128ContentAccess = in.Flag("Allow128ContentAccess");
    security.allow128Copying = in.Flag("Allow128Copying");
    security.changes128 = in.RowOf("Changes128", Changes::General);
    security.printing128 = in.RowOf("Printing128", Printing::Full);
    security.encryptMetadata128 = in.Flag("EncryptMetadata128");
    return security;
}

RunApp ReadRunApp(BlockReader& in) {
    RunApp app;
    app.useCustomApp = in.Flag("UseCustomApp");
    app.appPath = in.Text("AppPath");
    app.appParameters = in.Text("AppParameters");
    return app;
}

Details ReadDetails(BlockReader& in) {
    Details details;
    for (WideString& text : details.text) text = in.AnyText("a text of the item's details");
    details.value = in.Number("the value of the item's details", 8);
    return details;
}

Item ReadItem(BlockReader& in) {
    Item item;
    item.source = in.Text("Source");
    item.selectionHtml = in.AnyText("SelectionHtml");
    item.itemText = in.AnyText("ItemText");
    item.outputFile = in.Text("OutputFile");
    const std::uint32_t attachments = in.Count("Attachments", 4);
    for (std::uint32_t k = 0; k < attachments && !in.Failed(); ++k) {
        item.attachments.push_back(in.Text("an attachment"));
    }
    item.sourceIsTemporary = in.Flag("SourceIsTemporary");
    item.attachmentsAreTemporary = in.Flag("AttachmentsAreTemporary");
    if (in.Flag("HasDetails")) item.details = ReadDetails(in);
    return item;
}

}  // namespace

std::uint32_t ReadBlockSize(std::span<const std::uint8_t> bytes) {
    BlockReader in(bytes);
    return in.U32("BlockSize");
}

Result<Job> ReadJobBlock(std::span<const std::uint8_t> bytes) {
    BlockReader in(bytes);
    Job job;
    job.blockSize = in.U32("BlockSize");
    if (!in.Failed() && job.blockSize != bytes.size()) {
        in.Fail("BlockSize", "is " + std::to_string(job.blockSize) + ", but there are " +
                                 std::to_string(bytes.size()) + " bytes");
    }
    const std::uint64_t version = in.Number("FormatVersion", 1);
    if (version != kFormatVersion) {
        in.Fail("FormatVersion", "is " + std::to_string(version) + ", and only 12 is known");
    }
    if (in.Flag("HasSecurity")) job.security = ReadSecurity(in);
    if (in.Flag("HasRunApp")) job.runApp = ReadRunApp(in);
    job.nameFlag = in.Flag("NameFlag");
    job.askOutputFile = in.Flag("AskOutputFile");
    if (job.nameFlag || job.askOutputFile) job.suggestedName = in.Text("SuggestedName");
    job.optionFlag = in.Flag("OptionFlag");
    job.optionValue = in.Number("OptionValue", 8);
    if (in.Flag("ExtraFlag")) {
        ExtraTexts& extra = job.extraTexts.emplace();
        for (WideString& text : extra.text) text = in.AnyText("an extra text");
    }
    const std::uint32_t items = in.Count("ItemCount", kLeastItemBytes);
    for (std::uint32_t k = 0; k < items && !in.Failed(); ++k) job.items.push_back(ReadItem(in));
    if (!in.Failed() && in.Left() != 0) {
        in.Fail("the last item", "is followed by " + std::to_string(in.Left()) + " more bytes");
    }
    if (in.Failed()) return in.GetError();
    return job;
}

}  // namespace converter
