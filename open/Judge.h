// Judge: whether the viewer shows a file correctly, that is, as other programs show it.
// What to do if it does not is left to the callers.
#pragma once

/// How the viewer shows a DXF file.
enum class Look {
    Correct,   // or the file is empty, not regular or cannot be opened, which the viewer reports itself
    Misplaced, // correctly, but too far from the origin, too small or too large to be recognised
    Wrong,     // incomplete or with errors, or the file is not a complete DXF file in text form
};

/// Judges a file, whatever its name. Stops at the first entity that the viewer shows wrongly.
Look look_of(const char* file);
