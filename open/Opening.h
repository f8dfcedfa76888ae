// Opening: shows a drawing that the viewer cannot show as it is: has it converted, and tells what is missing.
// Judging it, and removing the folder in which this happens, are left to the caller.
#pragma once

#include "Judge.h"

#include <string>

/// Whether the viewer opens a file of this name: it ends in ".dxf" and is UTF-8.
bool is_name_for_viewer(const std::string& file);

/// Shows `file` in the viewer until that is closed, and returns the exit code for the process. Files are made in
/// `folder`, if its path is not empty. Only a drawing that looks as it is meant is not converted.
int show(int argc, char** argv, const std::string& file, const std::string& folder, Look look);
