// The OpenGL calls that draw an object, as recorded by functions that stand in for OpenGL's.

#include "helper.h"

namespace
{

QString calls;

void note(const char* name, std::initializer_list<double> arguments = {})
{
    calls += QString("|") + name;
    for (const double argument : arguments) calls += QString(" %1").arg(argument);
}

} // namespace

extern "C" {
void glDisable(GLenum what) { note("disable", {double(what)}); }
void glEnable(GLenum what) { note("enable", {double(what)}); }
void glLoadName(GLuint name) { note("name", {double(name)}); }
void glPointSize(GLfloat size) { note("size", {size}); }
void glLineWidth(GLfloat width) { note("width", {width}); }
void glBegin(GLenum mode) { note("begin", {double(mode)}); }
void glEnd() { note("end"); }
void glColor3d(GLdouble r, GLdouble g, GLdouble b) { note("color", {r, g, b}); }
void glNormal3d(GLdouble x, GLdouble y, GLdouble z) { note("normal", {x, y, z}); }
void glVertex3dv(const GLdouble* v) { note("vertex", {v[0], v[1], v[2]}); }
void glMaterialfv(GLenum face, GLenum name, const GLfloat* v)
{
    note("material", {double(face), double(name), v[0], v[1], v[2], v[3]});
}
}

class TestObject : public QObject
{
    Q_OBJECT

private slots:
    void draws()
    {
        // 1 is GL_LINES, 7 GL_QUADS, 1028 GL_FRONT, 2896 GL_LIGHTING, 4609 GL_DIFFUSE; A to D are the vertices.
        const QString plain = "|color 0.961 0.961 0.961",
                      solid = "|enable 2896|begin 7|material 1028 4609 %1 1|normal 0 0 1|A|B|C|D|end";
        const struct {
            int type, mode;
            unsigned int mark;
            QString expected;
        } rows[] = {
            {0, 2, 0, "|size 1|begin 0" + plain + "|A|end"},
            {1, 2, 1, "|width 1|begin 1|color 1 0 1|A|B|end"},
            {1, 1, 3, "|width 1|begin 1" + plain + "|A|B|end"}, // selected means no mark but that one
            {2, 0, 0, "|size 1|begin 0" + plain + "|A|B|C|D|end"},
            {2, 1, 0, "|width 1|begin 1" + plain + "|A|B|B|C|C|D|D|A|end"},
            {2, 2, 0, solid.arg("0.961 0.961 0.961")},
            {2, 2, 1, solid.arg("1 0 1")},
            {2, 3, 0, ""},
            {3, 1, 0, ""},
        };
        for (const auto& row : rows) {
            const auto face =
                entity(static_cast<DraftEntity::EntityType>(row.type), {1, 2, 3, 4, 2, 3, 4, 5, 3, 1, 5, 6});
            GLObject object(face.get());
            object.local_id(1050);
            object.rendering(static_cast<GLObject::DRendering>(row.mode));
            object.set_mark(row.mark);
            calls.clear();
            object.draw();
            QString expected = "|disable 2896|name 1050" + row.expected;
            expected.replace("|A", "|vertex 1 2 3").replace("|B", "|vertex 4 2 3").replace("|C", "|vertex 4 5 3");
            QCOMPARE(calls, expected.replace("|D", "|vertex 1 5 6"));
        }
    }
};

QTEST_APPLESS_MAIN(TestObject)
#include "object.moc"
