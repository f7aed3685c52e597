#pragma once

#include "foundation/status.h"
#include "foundation/wstring.h"

/// Where temporary things go, and names that are free. Any thread may call these.
namespace AUX {

/// Whether this process runs at low integrity, so that the ordinary temporary folder cannot be
/// written. Worked out at the first call, from the thread's or the process's token; false if there
/// is no telling.
[[nodiscard]] bool IsLowIntegrityProcess() noexcept;

/// Gives the folder for temporary things, with a '\\' at its end; it need not exist. At low
/// integrity it lies in the part of the user's data that such a process may write.
/// \return false, with an empty output, if there is none or memory runs out.
[[nodiscard]] bool GetTempFolder(WString& output) noexcept;

/// Makes a path `folder` `prefix` `<hex>` `.` `extension` that does not exist, from the time within
/// the hour. Nothing is created: the name is free at the moment of the test only.
/// \param folder     Ends in '\\' if a separator is wanted.
/// \param extension  Without its dot; the dot is there even if it is empty.
/// \param output     Gets the path; has room for 260 characters afterwards.
/// \param stem       May be null. Gets the prefix with the number.
/// \return false, with empty outputs, if 10,001 names in a row exist or memory runs out.
[[nodiscard]] bool MakeUniqueFileName(WStringView folder, WStringView prefix, WStringView extension,
                                      WString& output, WString* stem = nullptr) noexcept;

/// Creates an empty file with a name of its own.
/// \param buffer  Gets the path; holds 260 characters.
/// \param prefix  Its first three characters count; what is missing comes from "tio". May be null.
/// \param folder  Null or empty: that of GetTempFolder.
/// \return 0 or the system's error; kStatusInsufficientMemory; kStatusFailedToInitialize if there
///         is no temporary folder.
[[nodiscard]] Status MakeTempFileNameInFolder(WCHAR* buffer, const WCHAR* prefix,
                                              const WCHAR* folder = nullptr) noexcept;

}  // namespace AUX
