#pragma once

#include <string>
#include <vector>

#include "apps/qzanno/Diagnostics.h"

namespace qz::tool {

/// Joins the manifests of a run's shares to the one that the whole run would have written, and names the titles and
/// shares that are missing, and lines that are none or do not agree. The exit code: 1 when there is anything to name;
/// what is there is written all the same, but not the manifests of different runs.
int mergeManifests(const std::vector<std::string>& inputs, const std::string& output, Diagnostics& diagnostics);

}  // namespace qz::tool
