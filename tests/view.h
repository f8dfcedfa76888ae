// A drawing window on the screen, with Qt's callbacks made public, for the tests and the benchmark.
#pragma once

#include <QTest>

#include "GUI/File/MyGlMDIChild.h"

class View : public MyGlMDIChild
{
public:
    /// An empty window, not shown.
    View() : MyGlMDIChild(nullptr) {}

    /// Loads a drawing, and shows it without a frame.
    View(const QString& file, const QRect& place) : View()
    {
        loadFile(file);
        setWindowFlag(Qt::FramelessWindowHint);
        setGeometry(place);
        show();
        if (!QTest::qWaitForWindowExposed(this))
            qFatal("The window did not come up.");
        makeCurrent();
    }

    void paintGL() override
    {
        ++paints;
        MyGlMDIChild::paintGL();
    }

    using MyGlMDIChild::mouseDoubleClickEvent;
    using MyGlMDIChild::resizeGL;

    int paints = 0;
};
