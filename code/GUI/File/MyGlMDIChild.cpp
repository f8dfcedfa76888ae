// Loads one file: reads it, reports errors, sets the scale, makes the objects.

#include "MyGlMDIChild.h"

#include "GL/GLObject.h"
#include "GUI/Boxes.h"

#include <QApplication>
#include <QFileInfo>

namespace
{

constexpr unsigned long first_local_id = 1024;

} // namespace

MyGlMDIChild::MyGlMDIChild(QWidget* parent) : QGLEditor(parent) {}

MyGlMDIChild::~MyGlMDIChild()
{
    for (const DraftEntity* entity : draft_entities)
        delete entity;
    draft_entities.clear();
}

bool MyGlMDIChild::loadFile(const QString& fileName)
{
    const DXFL_Processing reader(fileName.toStdString(), draft_entities);
    if (reader.get_file_status() != 0) {
        QApplication::restoreOverrideCursor();
        warn(this, "Warning ", "<br />Error reading of &#8220;" + rich_name(fileName) + "&#8221; file.<br /><hr />");
        return false;
    }

    const QFileInfo file(fileName);
    drw_name = file.fileName();
    drw_path = file.canonicalPath();
    drw_size = file.size();
    setWindowTitle(drw_name);

    if (draft_entities.empty()) {
        QApplication::restoreOverrideCursor();
        warn(this, "Warning ",
             "<br />The known entities were not found in the &#8220;" + rich_name(drw_name) +
                 "&#8221; file.<br /><hr />");
        return true;
    }
    take_extents(reader);
    make_objects();
    return true;
}

void MyGlMDIChild::take_extents(const DXFL_Processing& reader)
{
    DRVect3d cur_min_point;
    DRVect3d cur_max_point;
    double cur_drawing_limit = 1.0;
    reader.get_boundary(draft_entities, cur_min_point, cur_max_point, cur_drawing_limit);
    drawing_min_point(cur_min_point);
    drawing_max_point(cur_max_point);
    drawing_limit(cur_drawing_limit);
    if (cur_drawing_limit != 0.0) {
        drawing_scaling(1.0 / cur_drawing_limit);
        drawing_source_scaling(1.0 / cur_drawing_limit);
    }
}

void MyGlMDIChild::make_objects()
{
    unsigned long entity_id = first_local_id;
    for (my_drentity_iterator = draft_entities.begin(); my_drentity_iterator != draft_entities.end();
         ++my_drentity_iterator) {
        DraftEntity* entity = *my_drentity_iterator;
        auto* object = new GLObject(entity);
        object->local_id(entity_id++);
        add_drawing_object(object);
        switch (entity->get_type()) {
        case DraftEntity::Point:
            ++drw_point_quantity;
            break;
        case DraftEntity::Line:
            ++drw_line_quantity;
            break;
        case DraftEntity::Face:
            entity->compute_normal();
            ++drw_face_quantity;
            break;
        }
    }
}
