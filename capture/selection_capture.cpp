#include "capture/selection_capture.h"

bool CaptureSelection(IWebBrowser2*, AUX::WString&) noexcept { return false; }
