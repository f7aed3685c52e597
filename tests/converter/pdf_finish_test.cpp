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

    static PdfWish WishOf(int minor, const Security& security) {
        PdfWish wish = WishOf(minor);
        const Result<Protection> protection = DecideProtection(security);
        EXPECT_TRUE(protection);
        if (protection) wish.protection = *protection;
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

    static void Open(QPDF& pdf, const std::string& bytes, const char* password = "owner") {
        pdf.setSuppressWarnings(true);
        pdf.processMemoryFile("test", bytes.data(), bytes.size(), password);
    }

    std::string printed_ = MakePrinted();
    std::vector<std::string> notes_;
};

TEST_F(PdfFinishTest, SetsTheExactSheetAndKeepsTheTitle) {
    for (const bool links : {true, false}) {
        PdfWish wish = WishOf(4);
        wish.links = links;
        QPDF pdf;
        const std::string bytes = Finish(wish);
        Open(pdf, bytes);
        ASSERT_EQ(pdf.getAllPages().size(), std::size_t{kPages});
        for (QPDFObjectHandle page : pdf.getAllPages()) {
            EXPECT_EQ(page.getKey("/MediaBox").unparse(), "[ 0 0 595.3 841.9 ]");
            EXPECT_EQ(page.getKey("/Annots").getArrayNItems(), links ? 2 : 1);
        }
        EXPECT_EQ(pdf.getTrailer().getKey("/Info").getKey("/Title").getUTF8Value(), "The title");
    }
}

TEST_F(PdfFinishTest, WritesEveryVersionAndCompression) {
    for (int minor = 3; minor <= 7; ++minor) {
        std::size_t before = SIZE_MAX;
        for (const auto compression : {Compression::Low, Compression::Medium, Compression::High}) {
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
            PdfWish wish = WishOf(minor, SecurityOf(level.type));
            wish.compression = Compression::High;
            const std::string bytes = Finish(wish);
            QPDF pdf;
            Open(pdf, bytes);
            int revision = 0;
            int mask = 0;
            ASSERT_TRUE(pdf.isEncrypted(revision, mask));
            EXPECT_EQ(revision, level.revision);
            EXPECT_EQ(pdf.getPDFVersion(),
                      "1." + std::to_string(std::max(minor, level.leastMinor)));
            EXPECT_EQ(pdf.getExtensionLevel(), level.extension);
            EXPECT_EQ(notes_.size(), minor < level.leastMinor ? 1u : 0u);
            QPDF opened;
            EXPECT_NO_THROW(Open(opened, bytes, level.revision >= 5 ? "open\xC3\xA9" : "open\xE9"));
            QPDF refused;
            EXPECT_THROW(Open(refused, bytes, ""), std::exception);
        }
    }
}

/// What an encrypted file allows: assembling, forms, notes, other changes, copying, screen readers,
/// printing (H: in full, L: in low resolution).
std::string Allowed(QPDF& pdf) {
    const std::pair<bool, char> kRights[] = {
        {pdf.allowModifyAssembly(), 'a'},   {pdf.allowModifyForm(), 'f'},
        {pdf.allowModifyAnnotation(), 'n'}, {pdf.allowModifyOther(), 'm'},
        {pdf.allowExtractAll(), 'c'},       {pdf.allowAccessibility(), 's'},
        {pdf.allowPrintHighRes(), 'H'},     {pdf.allowPrintLowRes(), 'L'}};
    std::string allowed;
    for (const auto& [isAllowed, letter] : kRights) allowed.append(isAllowed, letter);
    return allowed;
}

TEST_F(PdfFinishTest, GivesThePermissionsOfEachChoice) {
    struct Case {
        Changes changes;
        Printing printing;
        bool copying, access;
        const char* allowed;
    };
    constexpr Case kCases[] = {{Changes::None, Printing::None, false, false, ""},
                               {Changes::Assembly, Printing::LowResolution, false, true, "asL"},
                               {Changes::Forms, Printing::Full, false, true, "fsHL"},
                               {Changes::Comments, Printing::None, true, false, "fnc"},
                               {Changes::General, Printing::Full, true, true, "afnmcsHL"}};
    for (const Case& c : kCases) {
        Security security = SecurityOf(Encryption::Rc4Bits128);
        security.changes128 = c.changes;
        security.printing128 = c.printing;
        security.allow128Copying = c.copying;
        security.allow128ContentAccess = c.access;
        QPDF pdf;
        const std::string bytes = Finish(WishOf(7, security));
        Open(pdf, bytes);
        EXPECT_EQ(Allowed(pdf), c.allowed);
    }
    for (int bits = 0; bits < 16; ++bits) {
        Security security = SecurityOf(Encryption::Rc4Bits40);
        security.allow40Printing = bits & 1;
        security.allow40Changing = bits & 2;
        security.allow40Copying = bits & 4;
        security.allow40Comments = bits & 8;
        QPDF pdf;
        const std::string bytes = Finish(WishOf(3, security));
        Open(pdf, bytes);
        const char* kLetters[] = {"H", "m", "c", "n"};
        for (int bit = 0; bit < 4; ++bit) {
            EXPECT_EQ(Allowed(pdf).find(kLetters[bit]) != std::string::npos,
                      (bits >> bit & 1) != 0);
        }
    }
}

TEST_F(PdfFinishTest, FindsEachDifferenceFromTheWish) {
    const PdfWish wish = WishOf(7, SecurityOf(Encryption::AesBits256R6));
    const std::string bytes = Finish(wish);
    ASSERT_TRUE(CheckPdf(bytes, wish, kPages));
    EXPECT_FALSE(CheckPdf(Finish(WishOf(7)), wish, kPages)) << "not protected";
    EXPECT_FALSE(CheckPdf(bytes, wish, kPages + 1)) << "lacks a page";
    EXPECT_FALSE(CheckPdf(bytes.substr(0, bytes.size() / 2), wish, kPages)) << "cut off";
    struct Case {
        const char* why;
        void (*change)(PdfWish& wish);
    };
    constexpr Case kCases[] = {
        {"protected unasked", [](PdfWish& other) { other.protection.reset(); }},
        {"version", [](PdfWish& other) { other.minor = 6; }},
        {"level", [](PdfWish& other) { other.protection->revision = 5; }},
        {"permissions", [](PdfWish& other) { other.protection->permissions.extract ^= true; }},
        {"metadata", [](PdfWish& other) { other.protection->encryptMetadata ^= true; }},
        {"password", [](PdfWish& other) { other.protection->userPassword = "another"; }},
    };
    for (const Case& c : kCases) {
        PdfWish other = wish;
        c.change(other);
        EXPECT_FALSE(CheckPdf(bytes, other, kPages)) << c.why;
    }
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
