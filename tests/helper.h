// What the tests share: files in a temporary folder, a view that shows what is protected, and boxes that get answered.
#pragma once

#include <QtTest>
#include <QtWidgets>

#include <cstring>
#include <memory>

#include "Drawing/DXFL_Processing.h"
#include "GL/GLObject.h"
#include "GL/QGLEditor.h"

#ifdef __SANITIZE_ADDRESS__
// Drivers stay loaded to the end, so that a leak in one is told by its name.
extern "C" int dlclose(void* /*library*/) noexcept { return 0; }
#endif

inline QTemporaryDir& folder()
{
    static QTemporaryDir the_folder;
    return the_folder;
}

/// Runs a test class as the program would run: with its pictures, and with settings of its own.
#define TOLMERA_TEST(Class)                                                                                            \
    int main(int argc, char** argv)                                                                                    \
    {                                                                                                                  \
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(folder().path()));                                                \
        Q_INIT_RESOURCE(Tolmera);                                                                                      \
        const QApplication app(argc, argv);                                                                            \
        Class test;                                                                                                    \
        return QTest::qExec(&test, argc, argv);                                                                        \
    }

/// Writes a file into the temporary folder and returns its path.
inline QString write_file(const QString& name, const QByteArray& bytes)
{
    QFile file(folder().filePath(name));
    QDir().mkpath(QFileInfo(file).path());
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("cannot write %s", qPrintable(name));
    return file.fileName();
}

/// A drawing of entities, each a text such as "POINT 1.5 2.5 3.5" with its coordinates in the order x, y, z.
inline QByteArray dxf(const QByteArrayList& entities)
{
    QByteArray text = "  0\nSECTION\n  2\nENTITIES\n";
    for (const QByteArray& entity : entities) {
        const QByteArrayList words = entity.split(' ');
        text += "  0\n" + words[0] + "\n  8\nWALLS\n";
        for (int i = 1; i < words.size(); ++i)
            text += " " + QByteArray::number(10 * ((i - 1) % 3 + 1) + (i - 1) / 3) + "\n" + words[i] + "\n";
    }
    return text + "  0\nENDSEC\n  0\nEOF\n";
}

inline std::unique_ptr<DraftEntity> entity(DraftEntity::EntityType type, const std::vector<double>& coordinates)
{
    auto made = std::make_unique<DraftEntity>(type);
    for (unsigned int i = 0; i < coordinates.size(); ++i)
        made->set_coordinate(coordinates[i], static_cast<DraftEntity::Coordinate>(i % 3), i / 3);
    made->compute_normal();
    return made;
}

/// What is in the frame buffer of a view, whose context is current.
inline QImage frame(const QWidget& view)
{
    QImage image(view.size() * view.devicePixelRatioF(), QImage::Format_RGB32);
    glReadPixels(0, 0, image.width(), image.height(), GL_BGRA, GL_UNSIGNED_BYTE, image.bits());
    return image.mirrored();
}

/// A view of entities that it owns, with its protected operations in the open.
class View : public QGLEditor
{
public:
    View() : QGLEditor(nullptr) {}

    GLObject* add(DraftEntity::EntityType type, const std::vector<double>& coordinates)
    {
        my_entities.push_back(entity(type, coordinates));
        auto* object = new GLObject(my_entities.back().get());
        object->local_id(1023 + my_entities.size());
        add_drawing_object(object);
        return object;
    }

    void show_at(int width, int height)
    {
        setWindowFlag(Qt::FramelessWindowHint);
        resize(width, height);
        show();
        QVERIFY(QTest::qWaitForWindowExposed(this));
        QTRY_COMPARE(size(), QSize(width, height));
        makeCurrent();
    }

    /// The frame as it is drawn now.
    QImage picture()
    {
        makeCurrent();
        paintGL();
        return frame(*this);
    }

    void mouse(QEvent::Type type, QPoint pos, Qt::MouseButton button, Qt::MouseButtons buttons)
    {
        QMouseEvent event(type, pos, button, buttons, Qt::NoModifier);
        QCoreApplication::sendEvent(this, &event);
    }

    using QGLEditor::resizeGL;
    int repaints = 0;

protected:
    void paintGL() override
    {
        ++repaints;
        QGLEditor::paintGL();
    }

private:
    std::vector<std::unique_ptr<DraftEntity>> my_entities;
};

/// Answers every modal window that comes up while it lives: notes a message box as "title|text", with "|wait" where
/// it came up under a wait cursor, and presses its only button, Ok; hands any other window to `on_dialog`.
class BoxReader
{
public:
    explicit BoxReader(const std::function<void(QWidget*)>& on_dialog = {})
    {
        QObject::connect(&my_timer, &QTimer::timeout, [this, on_dialog] {
            QWidget* window = QApplication::activeModalWidget();
            if (auto* box = qobject_cast<QMessageBox*>(window)) {
                boxes +=
                    box->windowTitle() + "|" + box->text() + (QApplication::overrideCursor() != nullptr ? "|wait" : "");
                if (box->standardButtons() == QMessageBox::Ok) box->button(QMessageBox::Ok)->click();
            } else if (window != nullptr && on_dialog) {
                on_dialog(window);
            }
        });
        my_timer.start(20);
    }

    QStringList boxes;

private:
    QTimer my_timer;
};
