#pragma once

#include "driver/conversion_job.h"

/// Removes a captured page: the file, and the folder of its parts beside it, whose name is the path
/// without the first ".html" in it, with "_files" or else ".files" behind. What cannot be removed
/// stays. An empty path does nothing.
void DeleteCapturedPage(const AUX::WString& path) noexcept;

/// Removes the temporary files that the job's items name.
void RemoveJobFiles(const ConversionJob& job) noexcept;
