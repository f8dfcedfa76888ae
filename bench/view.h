// A drawing window of 800 x 600 pixels, with its repaint and its pick open to be measured.
#pragma once

#include "GL/GLObject.h"
#include "GUI/File/MyGlMDIChild.h"

#include <chrono>
#include <functional>
#include <string>

/// The seconds that `work` takes.
template <typename Work> double seconds_of(Work work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

class View : public MyGlMDIChild
{
public:
    /// An empty window, not shown.
    View() : MyGlMDIChild(nullptr) {}

    /// Loads the file and shows it.
    explicit View(const std::string& file);

    /// Draws faces in this mode from the next repaint on.
    void render(GLObject::DRendering mode);

    /// The seconds of a repaint, and of the same one with `draw` instead of the objects, until OpenGL has finished.
    double repaint_seconds();
    double bare_repaint_seconds(const std::function<void()>& draw);

    /// The seconds of a left double-click in the middle, and of a selection pass there that draws by `draw`.
    double pick_seconds();
    double bare_pick_seconds(const std::function<void()>& draw);
};
