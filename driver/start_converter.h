#pragma once

#include "driver/conversion_job.h"
#include "settings/conversion_settings.h"

/// Gives the converter's path, in the module's own folder; the bare name if that is not known.
/// \return false, with `path` empty, when memory runs out.
[[nodiscard]] bool BuildConverterPath(AUX::WString& path) noexcept;

/// Starts the converter on a stored job and does not wait for it. If it does not start, removes the
/// storage file and the job's temporary files; the shared block stays open in both cases.
/// \param owner  Window of messages that the system may show.
/// \return whether it was started. Nothing is known of what it does then.
bool StartConverter(HWND owner, const AUX::WString& converterPath, ConversionSettings& settings,
                    const ConversionJob& job) noexcept;
