// The Options dialog as a user walks through it, from the toolbar of a tab to the registry and on
// to the next converter, in both builds.

#include <cstring>
#include <map>
#include <set>

#include "host/page_loading.h"
#include "host/tab.h"
#include "host/tab_thread.h"
#include "platform/registry.h"
#include "platform/testing_gui.h"
#include "resources/resource_ids.h"
#include "tests/end_to_end/host_test.h"
#include "tests/options/dialog_support.h"

namespace end_to_end {
namespace {

using namespace options_test;
using Step = platform::testing::DialogScript::Step;
using Values = std::map<std::string, std::string>;

constexpr WCHAR kKey[] = TEXT("Software\\Norvane Systems\\Quvada 6\\IE Addin");

/// Every value of the settings' key, numbers in decimal.
Values StoredValues() {
    Values values;
    platform::RegistryKey key;
    if (RegOpenKeyExW(HKEY_CURRENT_USER, kKey, 0, KEY_READ, key.Put()) != ERROR_SUCCESS) return {};
    for (DWORD i = 0;; ++i) {
        WCHAR name[64];
        DWORD nameLength = 64;
        DWORD type = 0;
        BYTE data[512];
        DWORD size = sizeof data;
        if (RegEnumValueW(key.Get(), i, name, &nameLength, nullptr, &type, data, &size) !=
            ERROR_SUCCESS) {
            return values;
        }
        std::string& value = values[platform::ToUtf8(name)];
        if (type == REG_DWORD) {
            DWORD number = 0;
            std::memcpy(&number, data, sizeof number);
            value = std::to_string(number);
        } else if (type == REG_SZ) {
            value = platform::ToUtf8(reinterpret_cast<const WCHAR*>(data));
        } else if (type == REG_BINARY) {
            value.assign(reinterpret_cast<const char*>(data), size);
        } else {
            value = "of type " + std::to_string(type);
        }
    }
}

/// A tab whose add-in has the recording converter beside it.
class OptionsWalkTest : public HostTest {
protected:
    void SetUp() override {
        std::string error;
        ASSERT_TRUE(addins_.TakeModule(RecordingPrograms() / "QVDIEaddin.x64.dll", error)) << error;
        host::PageAddress address;
        ASSERT_TRUE(host::ParsePageAddress(
            WritePage("page.html", "<title>t</title><meta name=page-height content=2000>"), address,
            error));
        thread_.Do([&] {
            std::shared_ptr<host::PageDocument> page;
            ASSERT_TRUE(LoadPage({}, {address, std::chrono::seconds(60), {}, {}}, page, error));
            tab_ = std::make_unique<host::Tab>(addins_);
            ASSERT_TRUE(tab_->Open(page, error)) << error;
        });
    }
    void TearDown() override {
        thread_.Do([&] { tab_.reset(); });
    }

    /// Chooses Options from the toolbar's menu and works on the dialog, which the script has to
    /// close. \return what message boxes said.
    std::vector<std::string> OpenOptions(Step script) {
        std::vector<std::string> said;
        thread_.Do([&] {
            bool ran = false;
            const platform::testing::DialogScript running({[&](HWND dialog) {
                script(dialog);
                ran = true;
            }});
            for (const auto& text : tab_->Press(QVD_COMMAND_OPTIONS, std::nullopt)) {
                said.push_back(platform::ToUtf8(text));
            }
            EXPECT_TRUE(ran) << "no dialog was shown";
        });
        return said;
    }

    void Convert() {
        thread_.Do([&] {
            EXPECT_TRUE(
                tab_->Press(QVD_COMMAND_CONVERT_PAGE, profile_.Path(TEXT("o.pdf"))).empty());
        });
        (void)platform::testing::WaitForStartedPrograms(20'000, nullptr);
    }

    host::AddinList addins_;
    std::unique_ptr<host::Tab> tab_;
    host::TabThread thread_;
};

/// Sets every control otherwise than it stands at first.
void SetEverything(HWND dialog) {
    const Pages on(dialog);
    Choose(on.page, QVD_LIST_PAPER, 0);
    Type(on.page, QVD_EDIT_WIDTH, "500.5");
    Choose(on.page, QVD_LIST_UNITS, 1);
    EXPECT_EQ(TextOf(on.page, QVD_EDIT_WIDTH), "6.951");
    Type(on.page, QVD_EDIT_HEIGHT, "10");
    Choose(on.page, QVD_LIST_UNITS, 2);
    EXPECT_EQ(TextOf(on.page, QVD_EDIT_HEIGHT), "254.1");
    Choose(on.page, QVD_LIST_UNITS, 0);
    EXPECT_EQ(TextOf(on.page, QVD_EDIT_WIDTH), "500.5");
    EXPECT_EQ(TextOf(on.page, QVD_EDIT_HEIGHT), "720.0");
    Type(on.page, QVD_EDIT_TOP, "14.17");
    for (int i = 0; i < 3; ++i) Click(on.page, QVD_UP_DOWN_BOTTOM, true);
    Type(on.page, QVD_EDIT_LEFT, "7.5");
    Type(on.page, QVD_EDIT_RIGHT, "9999");
    Choose(on.page, QVD_LIST_UNITS, 2);
    Press(on.page, QVD_RADIO_LANDSCAPE);

    SelectTab(dialog, 1);
    Press(on.security, QVD_CHECK_SECURITY);
    Press(on.security, QVD_CHECK_USER_PASSWORD);
    Type(on.security, QVD_EDIT_USER_PASSWORD, "open \xC3\xA4");
    Press(on.security, QVD_CHECK_OWNER_PASSWORD);
    Type(on.security, QVD_EDIT_OWNER_PASSWORD, "change");
    for (const int id : {QVD_CHECK_PRINTING_40, QVD_CHECK_CHANGING_40, QVD_CHECK_COPYING_40,
                         QVD_CHECK_COMMENTS_40}) {
        Press(on.permissions40, id);
    }
    Choose(on.security, QVD_LIST_LEVEL, 4);
    for (const int id : {QVD_CHECK_ACCESS_128, QVD_CHECK_COPYING_128, QVD_CHECK_METADATA_128}) {
        Press(on.permissions128, id);
    }
    Choose(on.permissions128, QVD_LIST_CHANGES_128, 3);
    Choose(on.permissions128, QVD_LIST_PRINTING_128, 1);

    SelectTab(dialog, 2);
    Press(on.advanced, QVD_CHECK_PAGE_COPY);
    Type(on.panel, QVD_EDIT_TARGET_WIDTH, "640");
    Choose(on.panel, QVD_LIST_SPECIFICATION, 4);
    Choose(on.panel, QVD_LIST_COMPRESSION, 2);
    Press(on.panel, QVD_RADIO_CUSTOM_APP);
    Type(on.panel, QVD_EDIT_APP_PATH, "C:\\Viewer\\view.exe");
    Type(on.panel, QVD_EDIT_APP_PARAMETERS, "-f %f");
    Press(on.panel, QVD_CHECK_RUN);
}

const Values kDefaults = {
    {"CompressionLevel", "1"},
    {"ConvertAttachments", "1"},
    {"GenerateLinks", "1"},
    {"LandscapeOrienatation", "0"},
    {"LoadDelay", "500"},
    {"MarginBottom2", "0"},
    {"MarginLeft2", "0"},
    {"MarginRight2", "0"},
    {"MarginTop2", "0"},
    {"PDFSpecification", "65540"},
    {"PageHeight2", "842000"},  // as the paper's row has them, not the record
    {"PageWidth2", "595000"},
    {"PaperSize", "11"},
    {"RunCustPDFApp", "0"},
    {"RunPDFApp", "1"},
    {"RunPDFParams", "%f"},
    {"RunPDFPath", ""},
    {"Units", "0"},
    {"UseWebPageBackgroundColor", "1"},
    {"UseWebPageCopy", "1"},
    {"WebPageTargetWidth", "1280"},
    {"sec128AllowCopying", "0"},
    {"sec128Changes", "0"},
    {"sec128ContentAccess", "0"},
    {"sec128EncryptMeta", "1"},
    {"sec128Printing", "0"},
    {"sec40AllowChanging", "0"},
    {"sec40AllowComments", "0"},
    {"sec40AllowCopying", "0"},
    {"sec40AllowPrinting", "0"},
    {"secEnabled", "0"},
    {"secHasOwnerPassword", "0"},
    {"secHasUserPassword", "0"},
    {"secOwnerPassword", ""},
    {"secType", "0"},
    {"secUserPassword", ""},
};

/// What SetEverything changes of that.
const Values kSet = {
    {"CompressionLevel", "2"},
    {"LandscapeOrienatation", "1"},
    {"MarginBottom2", "3000"},
    {"MarginLeft2", "7500"},
    {"MarginRight2", "1000000"},
    {"MarginTop2", "14170"},
    {"PDFSpecification", "65543"},
    {"PageHeight2", "720000"},
    {"PageWidth2", "500500"},
    {"PaperSize", "0"},
    {"RunCustPDFApp", "1"},
    {"RunPDFApp", "0"},
    {"RunPDFParams", "-f %f"},
    {"RunPDFPath", "C:\\Viewer\\view.exe"},
    {"Units", "2"},
    {"UseWebPageCopy", "0"},
    {"WebPageTargetWidth", "640"},
    {"sec128AllowCopying", "1"},
    {"sec128Changes", "3"},
    {"sec128ContentAccess", "1"},
    {"sec128EncryptMeta", "0"},
    {"sec128Printing", "1"},
    {"sec40AllowChanging", "1"},
    {"sec40AllowComments", "1"},
    {"sec40AllowCopying", "1"},
    {"sec40AllowPrinting", "1"},
    {"secEnabled", "1"},
    {"secHasOwnerPassword", "1"},
    {"secHasUserPassword", "1"},
    {"secOwnerPassword", "YwBoAGEAbgBnAGUA"},
    {"secType", "4"},
    {"secUserPassword", "bwBwAGUAbgAgAOQA"},
};

TEST_F(OptionsWalkTest, WhatIsSetIsStoredAndConverted) {
    EXPECT_TRUE(OpenOptions([](HWND dialog) {
                    SetEverything(dialog);
                    Press(dialog, QVD_BUTTON_CANCEL);
                }).empty());
    EXPECT_EQ(StoredValues(), Values()) << "Cancel stores nothing";

    EXPECT_TRUE(OpenOptions([](HWND dialog) {
                    SetEverything(dialog);
                    Press(dialog, QVD_BUTTON_RESET);
                    Press(dialog, QVD_BUTTON_OK);
                }).empty());
    EXPECT_EQ(StoredValues(), kDefaults);

    EXPECT_TRUE(OpenOptions([](HWND dialog) {
                    SetEverything(dialog);
                    Press(dialog, QVD_BUTTON_OK);
                }).empty());
    Values stored = kSet;
    stored.insert(kDefaults.begin(), kDefaults.end());
    EXPECT_EQ(StoredValues(), stored);

    Convert();
    EXPECT_EQ(Recorded("command_line"),
              R"("" "" \l \b \h \iw 640 \ih 2000 \ld 500 \is 65543 \ic 2 \pw 5005 \ph 7200 )"
              R"(\mt 141 \mb 30 \ml 75 \mr 10000 \sm QVD:IEP:HTMLData )");
    const std::string job = Recorded("block");
    for (const char* text : {"bwBwAGUAbgAgAOQA", "YwBoAGEAbgBnAGUA"}) {
        EXPECT_NE(job.find(text), std::string::npos) << text;
    }
    for (const WCHAR* text : {TEXT("C:\\Viewer\\view.exe"), TEXT("-f %f")}) {
        const platform::WideView units(text);
        EXPECT_NE(job.find(std::string(reinterpret_cast<const char*>(units.data()),
                                       units.size() * sizeof(WCHAR))),
                  std::string::npos)
            << platform::ToUtf8(units);
    }

    // What is stored is what is shown, and OK without a change changes nothing.
    EXPECT_TRUE(OpenOptions([](HWND dialog) {
                    const Pages on(dialog);
                    EXPECT_EQ(TextOf(on.page, QVD_EDIT_HEIGHT), "254.1");
                    EXPECT_EQ(RowOf(on.page, QVD_LIST_UNITS), 2);
                    EXPECT_EQ(TextOf(on.panel, QVD_EDIT_TARGET_WIDTH), "640.0");
                    EXPECT_TRUE(IsWindowVisible(on.page));
                    Press(dialog, QVD_BUTTON_OK);
                }).empty());
    EXPECT_EQ(StoredValues(), stored);
}

TEST_F(OptionsWalkTest, WhatIsRefusedIsShownAndNothingIsLost) {
    const std::vector<std::string> said = OpenOptions([](HWND dialog) {
        const Pages on(dialog);
        // Each try is from another tab than the one that has to come to the front.
        const auto isRefused = [&](WPARAM from) {
            SelectTab(dialog, from);
            Press(dialog, QVD_BUTTON_OK);
            return IsWindow(dialog) && IsWindowVisible(on.security) &&
                   SendMessageW(on.tabs, TCM_GETCURSEL, 0, 0) == 1 && StoredValues().empty();
        };
        Type(on.page, QVD_EDIT_TOP, "12");
        Press(on.security, QVD_CHECK_SECURITY);
        EXPECT_TRUE(isRefused(0));
        Press(on.security, QVD_CHECK_USER_PASSWORD);
        EXPECT_TRUE(isRefused(2));
        Type(on.security, QVD_EDIT_USER_PASSWORD, "same");
        Press(on.security, QVD_CHECK_OWNER_PASSWORD);
        EXPECT_TRUE(isRefused(0));
        Type(on.security, QVD_EDIT_OWNER_PASSWORD, "same");
        EXPECT_TRUE(isRefused(2));
        EXPECT_EQ(TextOf(on.page, QVD_EDIT_TOP), "12");
        Type(on.security, QVD_EDIT_OWNER_PASSWORD, "other");
        Press(dialog, QVD_BUTTON_OK);
    });
    ASSERT_EQ(said.size(), 4u);
    EXPECT_EQ(std::set(said.begin(), said.end()).size(), 3u) << "of two passwords one is missing";
    Values stored = StoredValues();
    EXPECT_EQ(stored["MarginTop2"], "12000");
    EXPECT_EQ(stored["secEnabled"], "1");

    // Cancelled after a reset: nothing is stored, and the next conversion is as before.
    EXPECT_TRUE(OpenOptions([](HWND dialog) {
                    Press(dialog, QVD_BUTTON_RESET);
                    Press(dialog, QVD_BUTTON_CANCEL);
                }).empty());
    EXPECT_EQ(StoredValues(), stored);
    Convert();
    EXPECT_NE(Recorded("command_line").find("\\mt 120 "), std::string::npos);
}

}  // namespace
}  // namespace end_to_end
