#include "converter/pdf_finish.h"

#include <gtest/gtest.h>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFObjectHandle.hh>
#include <qpdf/QPDFWriter.hh>

namespace converter {
namespace {

constexpr int kPages = 2;

/// What a browser gives: pages of a slightly wrong size, with a link and a note on each.
std::string MakePrinted() {
    QPDF pdf;
    pdf.emptyPDF();
    for (int k = 0; k < kPages; ++k) {
        QPDFObjectHandle page = pdf.makeIndirectObject(QPDFObjectHandle::parse(
            "<< /Type /Page /MediaBox [0 0 594.96 841.92] /Resources << >> /Annots ["
            "<< /Subtype /Link /Rect [0 0 9 9] /A << /S /URI /URI (http://x/) >> >>"
            "<< /Subtype /Text /Rect [0 0 9 9] >> ] >>"));
        page.replaceKey("/Contents",
                        QPDFObjectHandle::newStream(&pdf, std::string(5000, ' ') + "0 0 m"));
        pdf.addPage(page, false);
    }
    QPDFObjectHandle info = QPDFObjectHandle::parse("<< /Title (The title) >>");
    pdf.getTrailer().replaceKey("/Info", pdf.makeIndirectObject(info));
    QPDFWriter writer(pdf);
    writer.setOutputMemory();
    writer.write();
    const auto buffer = writer.getBufferSharedPointer();
    return {reinterpret_cast<const char*>(buffer->getBuffer()), buffer->getSize()};
}

class PdfFinishTest : public testing::Test {
protected:
    std::string Finish(const PdfWish& wish) {
        const Result<std::string> pdf =
            FinishPdf(printed_, wish, [&](const std::string& text) { notes_.push_back(text); });
        EXPECT_TRUE(pdf) << pdf.GetError().text;
        return pdf ? *pdf : std::string();
    }

    static PdfWish WishOf(int minor) {
        PdfWish wish;
        wish.sheet = {595.3, 841.9};
        wish.minor = minor;
        return wish;
    }

    static Security SecurityOf(Encryption type) {
        Security security;
        security.type = type;
        security.hasUserPassword = security.hasOwnerPassword = true;
        security.userPassword = TEXT("open\u00E9");
        security.ownerPassword = TEXT("owner");
        return security;
    }

    std::string printed_ = MakePrinted();
    std::vector<std::string> notes_;
};

TEST_F(PdfFinishTest, SetsTheExactSheetAndKeepsTheTitle) {
    for (const bool links : {true, false}) {
        PdfWish wish = WishOf(4);
        wish.links = links;
        const std::string bytes = Finish(wish);
        QPDF pdf;
        pdf.processMemoryFile("test", bytes.data(), bytes.size());
        ASSERT_EQ(pdf.getAllPages().size(), std::size_t{kPages});
        for (QPDFObjectHandle page : pdf.getAllPages()) {
            EXPECT_EQ(page.getKey("/MediaBox").unparse(), "[ 0 0 595.3 841.9 ]");
            EXPECT_EQ(page.getKey("/Annots").getArrayNItems(), links ? 2 : 1);
        }
        EXPECT_EQ(pdf.getTrailer().getKey("/Info").getKey("/Title").getUTF8Value(), "The title");
        EXPECT_FALSE(pdf.isEncrypted());
    }
}

TEST_F(PdfFinishTest, WritesEveryVersionAndCompression) {
    for (int minor = 3; minor <= 7; ++minor) {
        std::size_t before = SIZE_MAX;
        for (const Compression compression :
             {Compression::Low, Compression::Medium, Compression::High}) {
            SCOPED_TRACE(testing::Message() << minor << " " << static_cast<int>(compression));
            PdfWish wish = WishOf(minor);
            wish.compression = compression;
            const std::string bytes = Finish(wish);
            EXPECT_TRUE(bytes.starts_with("%PDF-1." + std::to_string(minor)));
            EXPECT_LE(bytes.size(), before);
            before = bytes.size() + 200;  // Packing a few objects may cost some bytes.
        }
    }
    EXPECT_TRUE(notes_.empty());
}

TEST_F(PdfFinishTest, ProtectsAtEveryLevelAndNeverLosesItToTheVersion) {
    struct Level {
        Encryption type;
        int revision;
        int leastMinor;
        int extension;
    };
    constexpr Level kLevels[] = {{Encryption::Rc4Bits40, 2, 3, 0},
                                 {Encryption::Rc4Bits128, 3, 4, 0},
                                 {Encryption::AesBits128, 4, 6, 0},
                                 {Encryption::AesBits256, 5, 7, 3},
                                 {Encryption::AesBits256R6, 6, 7, 8}};
    for (const Level& level : kLevels) {
        for (int minor = 3; minor <= 7; ++minor) {
            SCOPED_TRACE(testing::Message() << level.revision << " at 1." << minor);
            notes_.clear();
            PdfWish wish = WishOf(minor);
            wish.compression = Compression::High;
            const Result<Protection> protection = DecideProtection(SecurityOf(level.type));
            ASSERT_TRUE(protection);
            wish.protection = *protection;
            const std::string bytes = Finish(wish);
            QPDF pdf;
            pdf.processMemoryFile("test", bytes.data(), bytes.size(), "owner");
            int revision = 0;
            int mask = 0;
            ASSERT_TRUE(pdf.isEncrypted(revision, mask));
            EXPECT_EQ(revision, level.revision);
            EXPECT_EQ(pdf.getPDFVersion(),
                      "1." + std::to_string(std::max(minor, level.leastMinor)));
            EXPECT_EQ(pdf.getExtensionLevel(), level.extension);
            EXPECT_EQ(notes_.size(), minor < level.leastMinor ? 1u : 0u);
            const bool utf8 = level.revision >= 5;
            QPDF opened;
            EXPECT_NO_THROW(opened.processMemoryFile("test", bytes.data(), bytes.size(),
                                                     utf8 ? "open\xC3\xA9" : "open\xE9"));
            QPDF refused;
            refused.setSuppressWarnings(true);
            EXPECT_THROW(refused.processMemoryFile("test", bytes.data(), bytes.size(), ""),
                         std::exception);
        }
    }
}

TEST_F(PdfFinishTest, GivesThePermissionsOfEachChoice) {
    struct Case {
        Changes changes;
        bool assemble, form, annotate, modify;
    };
    constexpr Case kCases[] = {{Changes::None, false, false, false, false},
                               {Changes::Assembly, true, false, false, false},
                               {Changes::Forms, false, true, false, false},
                               {Changes::Comments, false, true, true, false},
                               {Changes::General, true, true, true, true}};
    for (const Encryption type : {Encryption::Rc4Bits128, Encryption::AesBits256R6}) {
        for (const Case& c : kCases) {
            for (const Printing printing :
                 {Printing::None, Printing::LowResolution, Printing::Full}) {
                Security security = SecurityOf(type);
                security.changes128 = c.changes;
                security.printing128 = printing;
                security.allow128Copying = c.form;
                security.allow128ContentAccess = !c.form;
                const Result<Protection> protection = DecideProtection(security);
                ASSERT_TRUE(protection);
                PdfWish wish = WishOf(7);
                wish.protection = *protection;
                const std::string bytes = Finish(wish);
                QPDF pdf;
                pdf.processMemoryFile("test", bytes.data(), bytes.size(), "owner");
                EXPECT_EQ(pdf.allowModifyAssembly(), c.assemble);
                EXPECT_EQ(pdf.allowModifyForm(), c.form);
                EXPECT_EQ(pdf.allowModifyAnnotation(), c.annotate);
                EXPECT_EQ(pdf.allowModifyOther(), c.modify);
                EXPECT_EQ(pdf.allowExtractAll(), c.form);
                EXPECT_EQ(pdf.allowAccessibility(), !c.form || type != Encryption::Rc4Bits128);
                EXPECT_EQ(pdf.allowPrintHighRes(), printing == Printing::Full);
                EXPECT_EQ(pdf.allowPrintLowRes(), printing != Printing::None);
            }
        }
    }
    for (int bits = 0; bits < 16; ++bits) {
        Security security = SecurityOf(Encryption::Rc4Bits40);
        security.allow40Printing = bits & 1;
        security.allow40Changing = bits & 2;
        security.allow40Copying = bits & 4;
        security.allow40Comments = bits & 8;
        PdfWish wish = WishOf(3);
        const Result<Protection> protection = DecideProtection(security);
        ASSERT_TRUE(protection);
        wish.protection = *protection;
        const std::string bytes = Finish(wish);
        QPDF pdf;
        pdf.processMemoryFile("test", bytes.data(), bytes.size(), "owner");
        EXPECT_EQ(pdf.allowPrintHighRes(), (bits & 1) != 0);
        EXPECT_EQ(pdf.allowModifyOther(), (bits & 2) != 0);
        EXPECT_EQ(pdf.allowExtractAll(), (bits & 4) != 0);
        EXPECT_EQ(pdf.allowModifyAnnotation(), (bits & 8) != 0);
    }
}

TEST_F(PdfFinishTest, FindsEachDifferenceFromTheWish) {
    PdfWish wish = WishOf(7);
    wish.protection = *DecideProtection(SecurityOf(Encryption::AesBits256R6));
    const std::string bytes = Finish(wish);
    ASSERT_TRUE(CheckPdf(bytes, wish, kPages));
    const std::string open = Finish(WishOf(7));

    EXPECT_FALSE(CheckPdf(open, wish, kPages)) << "not protected";
    EXPECT_FALSE(CheckPdf(bytes, WishOf(7), kPages)) << "protected unasked";
    EXPECT_FALSE(CheckPdf(bytes, wish, kPages + 1)) << "lacks a page";
    EXPECT_FALSE(CheckPdf(bytes.substr(0, bytes.size() / 2), WishOf(7), kPages)) << "cut off";
    PdfWish other = wish;
    other.minor = 6;
    EXPECT_FALSE(CheckPdf(bytes, other, kPages)) << "version";
    other = wish;
    other.protection->revision = 5;
    EXPECT_FALSE(CheckPdf(bytes, other, kPages)) << "level";
    other = wish;
    other.protection->permissions.extract = !other.protection->permissions.extract;
    EXPECT_FALSE(CheckPdf(bytes, other, kPages)) << "permissions";
    other = wish;
    other.protection->encryptMetadata = !other.protection->encryptMetadata;
    EXPECT_FALSE(CheckPdf(bytes, other, kPages)) << "metadata";
    other = wish;
    other.protection->userPassword = "another";
    EXPECT_FALSE(CheckPdf(bytes, other, kPages)) << "password";
    EXPECT_FALSE(FinishPdf("no PDF", WishOf(4), [](const std::string&) {}));
}

TEST(Protection, DecidesWhatAJobLeavesOpen) {
    Security security;
    security.hasUserPassword = true;
    security.userPassword = TEXT("u");
    security.type = Encryption::AesBits256R6;
    const Result<Protection> user = DecideProtection(security);
    ASSERT_TRUE(user);
    EXPECT_EQ(user->permissions, Permissions()) << "nobody asked for limits";
    EXPECT_GE(user->ownerPassword.size(), 32u);
    EXPECT_NE(DecideProtection(security)->ownerPassword, user->ownerPassword);

    security.hasUserPassword = false;  // its text stays in the record and must not count
    const Result<Protection> none = DecideProtection(security);
    ASSERT_TRUE(none);
    EXPECT_EQ(none->userPassword, "");
    EXPECT_FALSE(none->permissions.modify);

    security.hasUserPassword = true;
    security.userPassword.clear();
    EXPECT_FALSE(DecideProtection(security)) << "would open without a password";
    security.userPassword.assign(1, WCHAR{0});
    EXPECT_FALSE(DecideProtection(security)) << "would be cut off before the zero";
    security.userPassword = TEXT("\u4E2D");
    EXPECT_EQ(DecideProtection(security)->userPassword, "\xE4\xB8\xAD");
    security.type = Encryption::AesBits128;
    EXPECT_FALSE(DecideProtection(security)) << "the level can't carry the character";
}

}  // namespace
}  // namespace converter
