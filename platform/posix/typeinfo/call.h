#pragma once

/// Late-bound calls through an interface's table.

#include "platform/posix/typeinfo/library.h"

namespace platform::types {

/// Calls `function` of `instance` with arguments that are changed to the kinds it takes. Takes all
/// kinds of automation but arrays and currency.
/// \param argumentError  May be null. Gets the place in rgvarg of an argument that does not fit.
/// \return DISP_E_BADVARTYPE for a kind of another sort, such as a plain text;
/// DISP_E_BADPARAMCOUNT,
///         DISP_E_PARAMNOTFOUND, DISP_E_PARAMNOTOPTIONAL, DISP_E_TYPEMISMATCH, DISP_E_OVERFLOW;
///         DISP_E_EXCEPTION after the function's own failure, which is in `exception` then.
HRESULT CallThroughTable(const std::shared_ptr<const Library>& library, const Function& function,
                         void* instance, const DISPPARAMS& parameters, VARIANT* result,
                         EXCEPINFO* exception, UINT* argumentError);

}  // namespace platform::types
