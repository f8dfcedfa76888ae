// MyGlMDIChild: the drawing window, an OpenGL view that loads one DXF file.
// The main window frames, shows and closes it.
#pragma once

#include "Drawing/DXFL_Processing.h"
#include "GL/QGLEditor.h"

#include <QSize>
#include <QString>

#include <list>

/// A drawing window. It owns the entities of its drawing and, as a view, the objects that draw them, whose local ids
/// count from 1024 in list order.
class MyGlMDIChild : public QGLEditor
{
    Q_OBJECT

public:
    explicit MyGlMDIChild(QWidget* parent);
    ~MyGlMDIChild() override;

    QSize minimumSizeHint() const override { return {50, 50}; }
    QSize sizeHint() const override { return {400, 500}; }

    /// Loads a DXF file; call once, before the window is shown. If the file cannot be read, warns, changes nothing and
    /// returns false. If it has no known entity, warns, leaves the view empty and returns true. Removes the caller's
    /// override cursor before a warning; the window may be deleted while the warning is open.
    bool loadFile(const QString& fileName);

    /// The file's name without its directory, its directory with symbolic links resolved, and its size in bytes; empty
    /// and 0 until a file has been read.
    QString tell_file_name() const { return drw_name; }
    QString tell_file_path() const { return drw_path; }
    qint64 tell_file_size() const { return drw_size; }

    /// The number of entities of each type.
    unsigned long points() const { return drw_point_quantity; }
    unsigned long lines() const { return drw_line_quantity; }
    unsigned long faces() const { return drw_face_quantity; }

private:
    void take_extents(const DXFL_Processing& reader);
    void make_objects();

    QString drw_name;
    QString drw_path;
    qint64 drw_size = 0;
    unsigned long drw_point_quantity = 0;
    unsigned long drw_line_quantity = 0;
    unsigned long drw_face_quantity = 0;
    Draft_Entity_iterator my_drentity_iterator;
    std::list<DraftEntity*> draft_entities; // owned
};
