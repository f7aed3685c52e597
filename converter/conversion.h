#pragma once

#include "converter/command_line.h"
#include "converter/job_block.h"
#include "converter/page_printer.h"

namespace converter {

/// Carries out an accepted job, item by item; an item that fails does not stop the next. Each item
/// becomes one PDF. ItemText, attachments and details have no meaning here and are passed over,
/// with a note where something would be missed. The job's own files are removed at the end, however
/// it goes.
/// \return the first failure's code, with its text given to `around.note`.
ExitCode RunJob(const Job& job, const CommandLine& line, const Surroundings& around);

}  // namespace converter
