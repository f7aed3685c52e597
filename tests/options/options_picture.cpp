/// Writes a picture (BMP) of each tab of the Options dialog, as it opens on the defaults, but with
/// security on, so that its page shows what it offers.
///     options_picture <file's name without tab and ending>

#include <fstream>
#include <iostream>

#include "options/options_dialog.h"
#include "platform/testing_gui.h"
#include "tests/options/dialog_support.h"

int main(int count, char** arguments) {
    if (count != 2 || !AttachModule(GetModuleHandleW(nullptr))) return 2;
    ConversionSettings settings(nullptr);
    settings.Security->Enabled = true;
    settings.Security->HasOwnerPassword = true;
    settings.Security->Type = 4;
    OptionsDialog dialog;
    dialog.Bind(settings);
    const platform::testing::DialogScript script({[&](HWND window) {
        const char* const kTabs[] = {"page", "security", "advanced"};
        for (WPARAM tab = 0; tab < 3; ++tab) {
            options_test::SelectTab(window, tab);
            platform::testing::RunMessages();
            const platform::testing::Picture picture = platform::testing::PictureOf(window);
            const std::string file = std::string(arguments[1]) + '-' + kTabs[tab] + ".bmp";
            std::ofstream(file, std::ios::binary) << picture.FileBytes();
            std::cout << file << ": " << picture.width << " x " << picture.height << '\n';
        }
        options_test::Press(window, IDCANCEL);
    }});
    return dialog.Run() == IDCANCEL ? 0 : 1;
}
