#pragma once

#include <string>
#include <vector>

#include "converter/job_block.h"

namespace converter {

/// Makes the arguments of the custom application. The parameters are split at blanks; a part in
/// double quotes stays together and loses its quotes. Then `%f` becomes the PDF's path in every
/// argument, so that a blank in the path splits nothing, whether `%f` stands in quotes or not.
std::vector<std::string> MakeArguments(const std::string& parameters, const std::string& pdf);

/// Shows the PDF: with the job's own application, else with the desktop's for PDF files, if there
/// is a desktop. Does not wait for it. Does nothing when the environment has QUVADA_NO_OPEN=1.
/// \return an error when the custom application can't be started.
Outcome StartApp(const RunApp& app, const std::string& pdf);

}  // namespace converter
