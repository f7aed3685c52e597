#pragma once

#include "foundation/wstring.h"
#include "settings/shared_record.h"

/// What is run on the finished document. A ConversionSettings sets the defaults.
struct RunAppSettings final : SharedRecord {
    bool UseCustomApp = false;  ///< Run AppPath, not the default application for PDF files.
    AUX::WString AppPath;
    AUX::WString AppParameters;  ///< "%f" in it stands for the finished file.
};
