#include "cab/notice.h"

namespace AUX::CAB {

namespace {
constinit thread_local Status threadNotice = kStatusOk;
}

void ClearNotice() noexcept { threadNotice = kStatusOk; }
void SetNotice(Status notice) noexcept { threadNotice = notice; }
Status GetNotice() noexcept { return threadNotice; }

}  // namespace AUX::CAB
