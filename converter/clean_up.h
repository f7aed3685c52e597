#pragma once

#include <string>

#include "converter/job_block.h"

namespace converter {

/// Removes the storage file of an accepted job: it belongs to the converter. A file whose name is
/// not of the form qvdstg_<hex>.bin was made by somebody else and stays.
void RemoveStorageFile(const std::string& path);

/// Removes the captured pages of an accepted job, each with the folder of its style sheets: those
/// items whose source is temporary and named qvd_<hex>.html. Anything else stays. Links are removed
/// and not followed.
void RemoveCapturedPages(const Job& job);

}  // namespace converter
