// The main window's four information boxes: the application, its references, the DXF format, the active drawing.

#include "MyMainWindow.h"

#include <QMessageBox>

#include "File/MyGlMDIChild.h"

namespace
{

constexpr const char* home_page = "https://tolmera.example";

/// A link whose visible text is its own address.
QString link(const QString& address)
{
    return "<a href=\"" + address + "\">" + address + "</a>";
}

/// A fact as a row of a table.
QString row(const QString& label, const QString& value)
{
    return "<tr><td>" + label + "</td><td>&nbsp;:&nbsp;</td><td>" + value + "</td></tr>";
}

QString coordinates(const DRVect3d& point)
{
    const auto number = [](double value) { return QString::number(value, 'g', 6); };
    return number(point.x()) + ", " + number(point.y()) + ", " + number(point.z());
}

} // namespace

void MyMainWindow::inform(const QString& title, const QString& text)
{
    QMessageBox::information(this, title, text, QMessageBox::Ok, QMessageBox::NoButton);
}

void MyMainWindow::about()
{
    const QString name = windowTitle();
    inform("About " + name,
           "<br /><b>" + name +
               "</b> v.2.1.<br /><br />" //
               "Copyright &#169; 2026 Lastrove. All rights reserved.<br /><br />"
               "<table>" +
               row("Phone", "+1 555 0100") +
               row("E-mail", "<a href=\"mailto:tolmera@lastrove.example\">tolmera@lastrove.example</a>") +
               row("XMPP", "tolmera@chat.lastrove.example") + row("Matrix", "@tolmera:lastrove.example") +
               "</table><br /><br />"
               "Application &#8220;" +
               name +
               "&#8221; (<b>Tol</b>erant <b>m</b>odel <b>e</b>ntity <b>r</b>eading <b>a</b>pplication) "
               "makes processing and viewing of the main entities of 3D graphical data, stored at DXF-files."
               "<br /><br />"
               "Home page : " +
               link(home_page) + "<br /><br /><hr />");
}

void MyMainWindow::ireferences()
{
    const QString name = windowTitle();
    inform(name + " : References",
           "<br />Application &#8220;" + name +
               "&#8221; is built with using of the following external software:<br /><br />- Qt v." + qVersion() +
               " ( is available under the Lesser General Public License, LGPL ), "
               "Copyright &#169; The Qt Company Ltd. and other contributors, " +
               link("https://www.qt.io") +
               ";<br /><br />"
               "- OpenGL ( is a registered trademark of SGI, " +
               link("https://www.sgi.com") + " ), " + ogl_version + link("https://www.opengl.org") +
               ";<br /><br />"
               "- Icon set ( freeware ), Copyright &#169; 2026 Lastrove, " +
               link(home_page) + ".<br /><hr />");
}

void MyMainWindow::about_dxf()
{
    inform(windowTitle() + " : About DXF",
           tr("<br /><b>Drawing eXchange Format</b> (DXF) is a CAD data file format<br />"
              "developed by <i>Autodesk</i> (<a href=\"https://www.autodesk.com\">https://www.autodesk.com</a>)<br />"
              "to let AutoCAD&#174; exchange data with other programs.<br />"
              "Many programs support DXF: <i>Adobe Illustrator</i>,<br />"
              "<i>Corel Draw</i>, <i>Caddie</i>, <i>LibreOffice</i>, <i>Solidworks</i> etc.<br /><br />"
              "The DXF&#8482; format is a tagged representation of all the<br />"
              "information that an AutoCAD&#174; drawing file contains.<br /><br />"
              "<i>Tagged data</i> means that every data element in the file is<br />"
              "preceded by an integer, which is called its <i>group code</i>.<br /><br />"
              "The value of a group code tells which type of data element<br />"
              "follows, and what this element means for the given object<br />"
              "or record type.<br /><br />"
              "Nearly all information that a user puts into a drawing<br />"
              "can be represented in DXF.<br /><hr />"));
}

void MyMainWindow::aboutdrw()
{
    const MyGlMDIChild* drawing = activeMyGlMDIChild();
    if (drawing == nullptr)
        return;
    inform(windowTitle() + " : Information about Model",
           "&nbsp;<table>" + row("File name", drawing->tell_file_name()) + row("Place", drawing->tell_file_path()) +
               row("Size", QString::number(drawing->tell_file_size(), 10) + " bytes") + "</table><br /><table>" +
               row("Minimal point ( x, y, z )", coordinates(drawing->drawing_min_point())) +
               row("Maximal point ( x, y, z )", coordinates(drawing->drawing_max_point())) + "</table><br /><table>" +
               row("3D Points", QString::number(drawing->points(), 10)) +
               row("3D Lines", QString::number(drawing->lines(), 10)) +
               row("3D Faces", QString::number(drawing->faces(), 10)) + "</table><br /><hr />");
}
