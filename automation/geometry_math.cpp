#include "automation/geometry_math.h"

#include "foundation/allocated.h"
#include "platform/com_object.h"

namespace AUX {
namespace {

class GeometryMathObject final : public platform::ComObject<GeometryMath>, public Allocated {};

}  // namespace

platform::ComPtr<GeometryMath> MakeGeometryMath() noexcept {
    const platform::ComPtr<GeometryMathObject> made = platform::MakeObject<GeometryMathObject>();
    return platform::ComPtr<GeometryMath>(made.Get());
}

}  // namespace AUX
