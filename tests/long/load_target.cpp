// libFuzzer target: the whole road of a file, from its name through loadFile to a repaint in every rendering. Needs an
// X display with OpenGL.

#include "memory_file.h"

#include <QApplication>
#include <QMessageBox>

#include "GL/GLObject.h"
#include "GUI/File/MyGlMDIChild.h"

namespace
{

/// Answers every message box, unseen.
class BoxCloser : public QObject
{
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        auto* box = event->type() == QEvent::Polish ? qobject_cast<QMessageBox*>(watched) : nullptr;
        if (box != nullptr) {
            box->setAttribute(Qt::WA_DontShowOnScreen);
            QMetaObject::invokeMethod(box, "accept", Qt::QueuedConnection);
        }
        return false;
    }
};

void repaint_in_every_rendering(MyGlMDIChild& drawing)
{
    for (const GLObject::DRendering mode : {GLObject::WIREFRAME, GLObject::POINT, GLObject::SOLID}) {
        for (unsigned long i = 0; i < drawing.quantity_of_drawing_objects(); ++i)
            drawing.get_drawing_object(i)->rendering(mode);
        drawing.updateGL();
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    // libFuzzer leaves by exit(), after which Qt's own static objects are gone: so the application is never destroyed.
    [[maybe_unused]] static const QApplication* const app = new QApplication(*argc, *argv);
    static BoxCloser closer;
    qApp->installEventFilter(&closer);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    const MemoryFile file(bytes, size);
    MyGlMDIChild drawing(nullptr);
    if (!drawing.loadFile(QString::fromStdString(file.path())))
        std::abort();
    drawing.resize(64, 48);
    drawing.show();
    repaint_in_every_rendering(drawing);
    return 0;
}
