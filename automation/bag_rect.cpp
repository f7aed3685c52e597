#include "automation/bag_rect.h"

namespace AUX {
namespace {

struct Side {
    WStringView key;
    double BagRect::*field;
};

constexpr Side kSides[] = {
    {TEXT("top"), &BagRect::top},
    {TEXT("bottom"), &BagRect::bottom},
    {TEXT("left"), &BagRect::left},
    {TEXT("right"), &BagRect::right},
};

}  // namespace

BagRect LoadBagRect(CAB::DataDictionary& from) noexcept {
    BagRect rect;
    for (const Side& side : kSides) {
        CAB::DataItem* item = from.Find(side.key);
        double value = 0;
        if (item && item->GetDouble(value)) rect.*side.field = value;
    }
    return rect;
}

bool SaveBagRect(const BagRect& rect, CAB::DataDictionary& to) noexcept {
    for (const Side& side : kSides) {
        CAB::DataItem* item = to.GetOrAdd(
            side.key.data(), static_cast<std::int64_t>(side.key.size()), CAB::Kind::Double);
        if (!item || !item->SetDouble(&(rect.*side.field), 0)) return false;
    }
    return true;
}

}  // namespace AUX
