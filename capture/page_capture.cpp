#include "capture/page_capture.h"

bool PageCapture::Capture(IHTMLDocument2*, AUX::WStringView, AUX::WString&) noexcept {
    return false;
}
