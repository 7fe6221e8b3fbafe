#pragma once

#include <string>
#include <vector>

#include "apps/qzanno/Diagnostics.h"

namespace qz::tool {

/// Merges the manifests of a run's shares into the one that the whole run would have written, and reports missing
/// titles and shares, and invalid or conflicting lines. Returns the exit code: 1 if there is anything to report. The
/// merged manifest is written even so, unless the manifests belong to different runs.
int mergeManifests(const std::vector<std::string>& inputs, const std::string& output, Diagnostics& diagnostics);

}  // namespace qz::tool
