// Judge: whether the viewer shows a file as it is meant, which is as other programs show it.
// What to do where it does not is left to the programs that ask.
#pragma once

/// How the viewer shows a DXF file.
enum class Look {
    AsMeant,   // or the file cannot be opened, which the viewer tells by itself
    Misplaced, // as it is meant, but so far from the origin, so small or so large that it cannot be made out
    Wrong,     // not all of it, or other things; or the file is no complete DXF file in text form
};

/// Looks at a file, whatever its name. Stops at the first thing that the viewer shows wrongly.
Look look_of(const char* file);
