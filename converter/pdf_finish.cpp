#include "converter/pdf_finish.h"

#include <algorithm>
#include <exception>
#include <qpdf/Pl_Flate.hh>
#include <qpdf/Pl_String.hh>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFObjectHandle.hh>
#include <qpdf/QPDFPageDocumentHelper.hh>
#include <qpdf/QPDFPageObjectHelper.hh>
#include <qpdf/QPDFWriter.hh>
#include <vector>

namespace converter {
namespace {

constexpr int kObjectStreamMinor = 5;  // version 1.5 has them
constexpr int kSizeDecimals = 2;
constexpr int kBestPacking = 9;

void OpenPdf(QPDF& pdf, const std::string& bytes, const std::string& password = {}) {
    pdf.setSuppressWarnings(true);
    pdf.processMemoryFile("printed page", bytes.data(), bytes.size(), password.c_str());
}

std::string VersionText(int minor) { return "1." + std::to_string(minor); }

QPDFObjectHandle BoxOf(const Sheet& sheet) {
    return QPDFObjectHandle::newArray({QPDFObjectHandle::newInteger(0),
                                       QPDFObjectHandle::newInteger(0),
                                       QPDFObjectHandle::newReal(sheet.width, kSizeDecimals),
                                       QPDFObjectHandle::newReal(sheet.height, kSizeDecimals)});
}

void RemoveLinks(QPDFObjectHandle page) {
    QPDFObjectHandle old = page.getKey("/Annots");
    if (!old.isArray()) return;
    std::vector<QPDFObjectHandle> kept;
    for (QPDFObjectHandle annotation : old.getArrayAsVector()) {
        const bool link =
            annotation.isDictionary() && annotation.getKey("/Subtype").isNameAndEquals("/Link");
        if (!link) kept.push_back(annotation);
    }
    if (kept.empty()) {
        page.removeKey("/Annots");
    } else {
        page.replaceKey("/Annots", QPDFObjectHandle::newArray(kept));
    }
}

qpdf_r3_print_e PrintOf(Printing print) {
    switch (print) {
        case Printing::None:
            return qpdf_r3p_none;
        case Printing::LowResolution:
            return qpdf_r3p_low;
        case Printing::Full:
            break;
    }
    return qpdf_r3p_full;
}

void Protect(QPDFWriter& writer, const Protection& p) {
    const char* user = p.userPassword.c_str();
    const char* owner = p.ownerPassword.c_str();
    const Permissions& a = p.permissions;
    const qpdf_r3_print_e print = PrintOf(a.print);
    switch (p.type) {
        case Encryption::Rc4Bits40:
            writer.setR2EncryptionParametersInsecure(user, owner, print == qpdf_r3p_full, a.modify,
                                                     a.extract, a.annotate);
            return;
        case Encryption::Rc4Bits128:
            writer.setR3EncryptionParametersInsecure(user, owner, a.accessibility, a.extract,
                                                     a.assemble, a.annotate, a.form, a.modify,
                                                     print);
            return;
        case Encryption::AesBits128:
            writer.setR4EncryptionParametersInsecure(user, owner, a.accessibility, a.extract,
                                                     a.assemble, a.annotate, a.form, a.modify,
                                                     print, p.encryptMetadata, true);
            return;
        case Encryption::AesBits256:
            writer.setR5EncryptionParameters(user, owner, a.accessibility, a.extract, a.assemble,
                                             a.annotate, a.form, a.modify, print,
                                             p.encryptMetadata);
            return;
        case Encryption::AesBits256R6:
            writer.setR6EncryptionParameters(user, owner, a.accessibility, a.extract, a.assemble,
                                             a.annotate, a.form, a.modify, print,
                                             p.encryptMetadata);
            return;
    }
}

void Pack(QPDFWriter& writer, Compression compression, int minor) {
    const bool objects = compression != Compression::Low && minor >= kObjectStreamMinor;
    writer.setObjectStreamMode(objects ? qpdf_o_generate : qpdf_o_disable);
    if (compression == Compression::High) {
        writer.setRecompressFlate(true);
        Pl_Flate::setCompressionLevel(kBestPacking);
    }
}

/// What the file allows to someone who opens it without the owner password.
Permissions PermissionsOf(QPDF& pdf, Encryption type) {
    Permissions allowed;
    allowed.print = pdf.allowPrintHighRes()  ? Printing::Full
                    : pdf.allowPrintLowRes() ? Printing::LowResolution
                                             : Printing::None;
    allowed.modify = pdf.allowModifyOther();
    allowed.extract = pdf.allowExtractAll();
    allowed.annotate = pdf.allowModifyAnnotation();
    if (type == Encryption::Rc4Bits40) return allowed;  // The level has no others.
    allowed.accessibility = pdf.allowAccessibility();
    allowed.assemble = pdf.allowModifyAssembly();
    allowed.form = pdf.allowModifyForm();
    return allowed;
}

bool OpensWith(const std::string& bytes, const std::string& password) {
    try {
        QPDF pdf;
        OpenPdf(pdf, bytes, password);
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

/// The first thing in which the file's protection is not that of the wish, or nothing.
std::string CompareProtection(QPDF& pdf, const std::string& bytes, const Protection& wish) {
    int revision = 0;
    int mask = 0;
    int version = 0;
    QPDF::encryption_method_e streams = QPDF::e_none;
    QPDF::encryption_method_e texts = QPDF::e_none;
    QPDF::encryption_method_e files = QPDF::e_none;
    if (!pdf.isEncrypted(revision, mask, version, streams, texts, files)) return "it is missing";
    if (revision != wish.revision) return "its level is another";
    const bool aes = wish.type >= Encryption::AesBits256;
    if (aes && (streams != QPDF::e_aesv3 || texts != QPDF::e_aesv3)) return "its cipher is another";
    if (wish.type == Encryption::AesBits128 && (streams != QPDF::e_aes || texts != QPDF::e_aes)) {
        return "its cipher is another";
    }
    // At the lowest level printing is allowed or not, and nothing lies between.
    if (!(PermissionsOf(pdf, wish.type) == wish.permissions)) return "its permissions are others";
    QPDFObjectHandle metadata = pdf.getTrailer().getKey("/Encrypt").getKey("/EncryptMetadata");
    if ((!metadata.isBool() || metadata.getBoolValue()) != wish.encryptMetadata) {
        return "its metadata are treated in another way";
    }
    if (!wish.userPassword.empty() && OpensWith(bytes, "")) return "it opens without a password";
    if (!OpensWith(bytes, wish.userPassword)) return "its password does not open it";
    return {};
}

std::string WriteFinished(QPDF& pdf, const PdfWish& wish) {
    std::string finished;
    Pl_String out("finished PDF", nullptr, finished);
    QPDFWriter writer(pdf);
    writer.setOutputPipeline(&out);
    writer.setPreserveEncryption(false);
    Pack(writer, wish.compression, wish.minor);
    if (wish.protection) Protect(writer, *wish.protection);
    // Exactly the version: never below what the cipher needs, for which the caller cares, since a
    // lower one would silently leave the file unprotected.
    writer.forcePDFVersion(VersionText(wish.minor),
                           wish.protection ? wish.protection->extensionLevel : 0);
    writer.write();
    return finished;
}

}  // namespace

Outcome CheckPdf(const std::string& bytes, const PdfWish& wish, std::size_t pages) {
    try {
        QPDF pdf;
        OpenPdf(pdf, bytes, wish.protection ? wish.protection->ownerPassword : std::string());
        if (pdf.getAllPages().size() != pages) return Error{"The finished PDF lacks pages."};
        if (pdf.getPDFVersion() != VersionText(wish.minor)) {
            return Error{"The finished PDF has version " + pdf.getPDFVersion() + ", not " +
                         VersionText(wish.minor) + "."};
        }
        if (!wish.protection) {
            if (pdf.isEncrypted()) return Error{"The finished PDF is protected unasked."};
            return Done{};
        }
        const std::string fault = CompareProtection(pdf, bytes, *wish.protection);
        if (!fault.empty()) return Error{"The finished PDF is not protected as asked: " + fault};
        return Done{};
    } catch (const std::exception& error) {
        return Error{std::string("The finished PDF can't be read back: ") + error.what()};
    }
}

Result<std::string> FinishPdf(const std::string& printed, const PdfWish& asked,
                              const std::function<void(const std::string&)>& note) {
    PdfWish wish = asked;
    if (wish.protection && wish.protection->leastMinor > wish.minor) {
        wish.minor = wish.protection->leastMinor;
        note("PDF " + VersionText(asked.minor) + " has no such encryption; the file is PDF " +
             VersionText(wish.minor) + ".");
    }
    try {
        QPDF pdf;
        OpenPdf(pdf, printed);
        QPDFPageDocumentHelper pages(pdf);
        std::size_t count = 0;
        for (QPDFPageObjectHelper& helper : pages.getAllPages()) {
            QPDFObjectHandle page = helper.getObjectHandle();
            page.replaceKey("/MediaBox", BoxOf(wish.sheet));
            page.removeKey("/CropBox");
            if (!wish.links) RemoveLinks(page);
            ++count;
        }
        std::string finished = WriteFinished(pdf, wish);
        if (const Outcome checked = CheckPdf(finished, wish, count); !checked) {
            return checked.GetError();
        }
        return finished;
    } catch (const std::exception& error) {
        return Error{std::string("The PDF can't be finished: ") + error.what()};
    }
}

}  // namespace converter
