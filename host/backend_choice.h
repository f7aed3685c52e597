#pragma once

#include <map>
#include <memory>
#include <string>

#include "host/backend.h"
#include "host/options.h"

namespace host {

/// The backends of this build by the names that users write; under Windows there is no browser to
/// drive, so only the text one.
std::map<std::string, BackendKind> BackendNames();
BackendKind DefaultBackend();

/// A backend of a kind that BackendNames has.
std::unique_ptr<Backend> MakeBackend(const Options& options);

}  // namespace host
