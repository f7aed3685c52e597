#pragma once

#include "foundation/status.h"
#include "foundation/wstring.h"

/// What a Status, an HRESULT or an error code of the system says to a user. Any thread may call
/// these.
namespace AUX {

/// Fills `output` with a sentence such as "Error [IO subsystem]: Component is not initialized.", or
/// with "Success" for 0. Codes that nobody knows read "Unknown error: 0x%08X.", or "Unknown code:
/// ..." without bit 31.
/// \param messageOnly  Leaves out severity and origin.
/// \return true always; when memory runs out the output is shorter.
bool StatusToText(Status status, WString& output, bool messageOnly = false) noexcept;

/// Gives the message of a status, as the library or the system has it: system texts end in a line
/// end.
/// \param category  Whose table is searched first if the status is one of the library's own.
///                  StatusCategory::OperatingSystem: the low 16 bits are an error of the system.
/// \param buffer    Gets what fits, with a terminator; may be null with a length of 0.
/// \param length    Units of the buffer; 0 only measures.
/// \return the length of the whole message in UTF-16 units, without a terminator; 0 if there is
///         none or memory runs out.
[[nodiscard]] std::uint32_t GetStatusMessage(std::uint32_t category, Status status, WCHAR* buffer,
                                             std::uint32_t length) noexcept;

/// Gives, in the same way, the name of the category or of the module of the system that knows the
/// status; "System" if none does. \return 0 only when memory runs out.
[[nodiscard]] std::uint32_t GetStatusOrigin(std::uint32_t category, Status status, WCHAR* buffer,
                                            std::uint32_t length) noexcept;

}  // namespace AUX
