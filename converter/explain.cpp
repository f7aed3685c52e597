#include "converter/explain.h"

#include <cstdio>

namespace converter {
namespace {

using platform::ToUtf8;
using platform::WideString;

constexpr std::size_t kNameColumns = 26;

/// Collects lines "name   value".
class Lines {
public:
    void Add(const std::string& name, const std::string& value) {
        text_ += "  " + name;
        text_.append(name.size() < kNameColumns ? kNameColumns - name.size() : 1, ' ');
        text_ += value + "\n";
    }
    void Head(const std::string& text) { text_ += text + "\n"; }
    void Flag(const std::string& name, bool value) { Add(name, value ? "1 (yes)" : "0 (no)"); }
    void Text(const std::string& name, const WideString& value) { Add(name, Quote(value)); }

    const std::string& Get() const { return text_; }

private:
    /// On one line, whatever it holds; control characters could drive the reader's terminal.
    static std::string Quote(const WideString& value) {
        std::string shown = "\"";
        for (const char c : ToUtf8(value)) {
            const auto byte = static_cast<unsigned char>(c);
            if (byte >= 0x20 && byte != 0x7F && c != '\\' && c != '"') {
                shown += c;
                continue;
            }
            char escape[8];
            std::snprintf(escape, sizeof escape, c == '\\' || c == '"' ? "\\%c" : "\\x%02X", byte);
            shown += escape;
        }
        return shown + "\" (" + std::to_string(value.size()) + " characters)";
    }

    std::string text_;
};

std::string Points(std::int32_t tenths) {
    return std::to_string(tenths) + " (" + std::to_string(tenths / 10) + "." +
           std::to_string(tenths % 10) + " points)";
}

std::string Row(std::uint32_t row, const char* const names[]) {
    return std::to_string(row) + " (" + names[row] + ")";
}

constexpr const char* kEncryption[] = {"40-bit RC4", "128-bit RC4", "128-bit AES",
                                       "256-bit AES, extension level 3",
                                       "256-bit AES, extension level 8"};
constexpr const char* kChanges[] = {"none", "document assembly", "form fields and signing",
                                    "comments, form fields and signing",
                                    "general editing, comments and forms"};
constexpr const char* kPrinting[] = {"not allowed", "low resolution", "fully allowed"};
constexpr const char* kCompression[] = {"low", "medium", "high"};

void ExplainSecurity(const Security& security, ShowPasswords show, Lines& out) {
    const auto password = [&](const char* name, const WideString& text) {
        if (show == ShowPasswords::Yes) {
            out.Text(name, text);
        } else {
            out.Add(name, "(" + std::to_string(text.size()) + " characters)");
        }
    };
    out.Flag("HasUserPassword", security.hasUserPassword);
    out.Flag("HasOwnerPassword", security.hasOwnerPassword);
    password("UserPassword", security.userPassword);
    password("OwnerPassword", security.ownerPassword);
    out.Add("Type", Row(static_cast<std::uint32_t>(security.type), kEncryption));
    out.Flag("Allow40Printing", security.allow40Printing);
    out.Flag("Allow40Changing", security.allow40Changing);
    out.Flag("Allow40Copying", security.allow40Copying);
    out.Flag("Allow40Comments", security.allow40Comments);
    out.Flag("Allow128ContentAccess", security.allow128ContentAccess);
    out.Flag("Allow128Copying", security.allow128Copying);
    out.Add("Changes128", Row(static_cast<std::uint32_t>(security.changes128), kChanges));
    out.Add("Printing128", Row(static_cast<std::uint32_t>(security.printing128), kPrinting));
    out.Flag("EncryptMetadata128", security.encryptMetadata128);
}

void ExplainItem(const Item& item, std::size_t number, Lines& out) {
    out.Head("Item " + std::to_string(number));
    out.Text("Source", item.source);
    out.Text("SelectionHtml", item.selectionHtml);
    out.Text("ItemText", item.itemText);
    out.Text("OutputFile", item.outputFile);
    out.Add("Attachments", std::to_string(item.attachments.size()));
    for (const WideString& path : item.attachments) out.Text("  path", path);
    out.Flag("SourceIsTemporary", item.sourceIsTemporary);
    out.Flag("AttachmentsAreTemporary", item.attachmentsAreTemporary);
    out.Flag("HasDetails", item.details.has_value());
    if (!item.details) return;
    for (std::size_t k = 0; k < std::size(item.details->text); ++k) {
        out.Text("  text " + std::to_string(k + 1), item.details->text[k]);
    }
    out.Add("  value", std::to_string(item.details->value));
}

}  // namespace

std::string Explain(const CommandLine& line) {
    Lines out;
    out.Head("Command line");
    out.Text("first text", line.firstText);
    out.Text("second text", line.secondText);
    out.Flag("\\l  landscape", line.landscape);
    out.Flag("\\b  background", line.background);
    out.Flag("\\h  links", line.links);
    out.Flag("\\r  run application", line.runApp);
    out.Flag("\\hi hidden", line.hidden);
    out.Add("\\iw target width", std::to_string(line.width) + " pixels");
    out.Add("\\ih target height", std::to_string(line.height) + " pixels");
    out.Add("\\ld load delay", std::to_string(line.loadDelayMs) + " ms");
    const std::int64_t minor = std::int64_t{line.pdfVersion} - 0x10000;
    const bool known = minor >= 3 && minor <= 7;
    out.Add("\\is PDF version",
            std::to_string(line.pdfVersion) + (known ? " (1." + std::to_string(minor) + ")"
                                                     : std::string(" (unknown; 1.7 is written)")));
    out.Add("\\ic compression", Row(static_cast<std::uint32_t>(line.compression), kCompression));
    out.Add("\\pw page width", Points(line.pageWidth));
    out.Add("\\ph page height", Points(line.pageHeight));
    out.Add("\\mt margin top", Points(line.marginTop));
    out.Add("\\mb margin bottom", Points(line.marginBottom));
    out.Add("\\ml margin left", Points(line.marginLeft));
    out.Add("\\mr margin right", Points(line.marginRight));
    out.Text("\\bp storage file", line.storageFile);
    out.Text("\\sm shared memory", line.sharedName);
    out.Text("\\ce extra", line.extra);
    return out.Get();
}

std::string Explain(const Job& job, ShowPasswords show) {
    Lines out;
    out.Head("Job");
    out.Add("BlockSize", std::to_string(job.blockSize) + " bytes");
    out.Add("FormatVersion", std::to_string(kFormatVersion));
    out.Flag("HasSecurity", job.security.has_value());
    if (job.security) ExplainSecurity(*job.security, show, out);
    out.Flag("HasRunApp", job.runApp.has_value());
    if (job.runApp) {
        out.Flag("UseCustomApp", job.runApp->useCustomApp);
        out.Text("AppPath", job.runApp->appPath);
        out.Text("AppParameters", job.runApp->appParameters);
    }
    out.Flag("NameFlag", job.nameFlag);
    out.Flag("AskOutputFile", job.askOutputFile);
    if (job.nameFlag || job.askOutputFile) out.Text("SuggestedName", job.suggestedName);
    out.Flag("OptionFlag", job.optionFlag);
    out.Add("OptionValue", std::to_string(job.optionValue));
    out.Flag("ExtraFlag", job.extraTexts.has_value());
    if (job.extraTexts) {
        for (const WideString& text : job.extraTexts->text) out.Text("ExtraText", text);
    }
    out.Add("ItemCount", std::to_string(job.items.size()));
    for (std::size_t k = 0; k < job.items.size(); ++k) ExplainItem(job.items[k], k + 1, out);
    return out.Get();
}

}  // namespace converter
