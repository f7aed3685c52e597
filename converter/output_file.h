#pragma once

#include <atomic>
#include <string>

#include "converter/result.h"
#include "platform/text.h"

namespace converter {

/// A file name made of a page's title: characters that no name may hold become blanks, nothing is
/// left of leading and trailing blanks and full stops, an overlong name is cut. "Web page" if
/// nothing remains. Without an extension.
platform::WideString FileNameOf(const platform::WideString& title);

/// Asks the user for the output file, with the suggestion filled in. \return the host's path; an
/// error if there is no answer.
Result<std::string> AskOutputFile(const platform::WideString& suggestedName);

/// A path in the current folder for the suggestion that names no file yet.
std::string FreeOutputFile(const platform::WideString& suggestedName);

/// Puts the bytes in the place of `path` in one step: they go to a new file beside it, which takes
/// its name when all of it is on the disk. An error leaves what was there before. A link stays a
/// link, and a file that is replaced keeps its permissions.
/// \param cancel  Borrowed; when it is set before the last step, nothing changes. May be null.
Outcome WriteOutputFile(const std::string& path, const std::string& bytes,
                        const std::atomic<bool>* cancel);

}  // namespace converter
