// Opening: has a drawing converted, shows the copy in the viewer, and says what is missing from it.
// Judging it, and removing the folder in which this happens, are left to the caller.
#pragma once

#include "Judge.h"

#include <string>

/// Whether the viewer opens a file of this name: it ends in ".dxf" and is UTF-8.
bool is_name_for_viewer(const std::string& file);

/// Shows `file` in the viewer until that is closed, and returns the exit code for the process. Files are made in
/// `folder`, if its path is not empty. The drawing is converted unless `look` is AsMeant.
int show(int argc, char** argv, const std::string& file, const std::string& folder, Look look);
