// Runs all exports of one scene with the exporters of the converter, and keeps account of what they
// write and say.
#pragma once

#include <set>
#include <string>

#include "programs/veltrum-all/options.h"
#include "programs/veltrum-all/scene_report.h"

// `name`, or with a number behind it if it is taken, which it is from now on. Names that differ in
// case alone are one: their folders would be, on some disks.
std::string UniqueName(const std::string& name, std::set<std::string>& taken);

// `folder` is where the scene's files go, relative to the output folder: empty or ending in "/".
// What goes wrong stands in the report; nothing is thrown.
SceneReport ExportScene(const Options& options, const std::string& scene, const std::string& name,
                        const std::string& folder);
