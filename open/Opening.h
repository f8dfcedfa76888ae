// Opening: converts a drawing if needed, shows it in the viewer, and says what is missing.
// Judging the drawing, and making and removing the temporary folder, are left to the caller.
#pragma once

#include "Judge.h"

#include <string>

/// Whether the viewer opens a file with this name: it ends in ".dxf" and is UTF-8.
bool is_name_for_viewer(const std::string& file);

/// Shows `file` in the viewer, converted unless `look` is Correct. Makes copies and links in `folder`. Returns the exit
/// code for the process when the viewer is closed.
int show(int argc, char** argv, const std::string& file, const std::string& folder, Look look);
