#pragma once

#include "platform/com_library.h"
#include "platform/com_ptr.h"

/// Makes one object of a class; as IUnknown::QueryInterface.
using ObjectMaker = HRESULT (*)(REFIID id, void** object) noexcept;

/// Makes the factory of a class. It refuses to be part of another object. Null when memory runs
/// out.
[[nodiscard]] platform::ComPtr<IClassFactory> MakeClassFactory(ObjectMaker maker) noexcept;
