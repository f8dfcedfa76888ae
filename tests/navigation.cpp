// The mouse on a view: gestures and their numbers, cursors, picks, the background dialog.

#include "helper.h"

namespace
{

constexpr auto both = Qt::LeftButton | Qt::RightButton;

int cursor() { return QApplication::overrideCursor() != nullptr ? QApplication::overrideCursor()->shape() : -1; }

/// Double-clicks the left button, checks that nothing but the picked object is marked, and returns its local id.
unsigned long pick(View& view, QPoint pos)
{
    view.mouse(QEvent::MouseButtonDblClick, pos, Qt::LeftButton, Qt::LeftButton);
    unsigned long marked = 0;
    for (unsigned long i = 0; i < view.quantity_of_drawing_objects(); ++i)
        if (view.get_drawing_object(i)->check_mark(selected))
            marked = marked == 0 ? view.get_drawing_object(i)->local_id() : ~0UL;
    return marked == view.last_selected_entity_id() ? marked : ~0UL;
}

} // namespace

class TestNavigation : public QObject
{
    Q_OBJECT

private slots:
    void drags()
    {
        const struct {
            Qt::MouseButtons buttons;
            DRVect3d turned, moved;
        } rows[] = {{Qt::LeftButton, {18, 9, 0}, {}}, {Qt::RightButton, {18, 0, 9}, {}}, {both, {}, {0.05, -0.1, 0}},
            {Qt::LeftButton | Qt::MiddleButton, {18, 9, 0}, {}}, {Qt::MiddleButton, {}, {}}};
        for (const auto& row : rows) {
            View view;
            view.show_at(400, 500);
            view.mouse(QEvent::MouseButtonPress, {100, 100}, Qt::LeftButton, row.buttons);
            view.repaints = 0;
            view.mouse(QEvent::MouseMove, {130, 120}, Qt::NoButton, row.buttons);
            view.mouse(QEvent::MouseMove, {120, 150}, Qt::NoButton, row.buttons);
            QCOMPARE(view.repaints, row.buttons == Qt::MiddleButton ? 0 : 2);
            view.mouse(QEvent::MouseMove, {300, 300}, Qt::NoButton, Qt::MiddleButton); // only the last position
            view.mouse(QEvent::MouseMove, {300, 300}, Qt::NoButton, row.buttons);
            QVERIFY((view.drawing_rotation() - row.turned).length() < 1e-12);
            QVERIFY((view.drawing_translation() - row.moved).length() < 1e-12);
            view.mouse(QEvent::MouseButtonRelease, {300, 300}, Qt::LeftButton, Qt::NoButton);
            QCOMPARE(cursor(), -1);
        }
    }

    void wheel_scales()
    {
        View view;
        view.show_at(100, 100);
        for (const auto& [delta, scale] :
            {std::pair(120, 1 / 1.125), {-120, 1.0}, {-240, 1.265625}, {60, 1.19324269}}) {
            QWheelEvent event(QPointF(5, 5), QPointF(5, 5), {}, {0, delta}, {}, {}, Qt::NoScrollPhase, false);
            event.ignore();
            view.repaints = 0;
            QCoreApplication::sendEvent(&view, &event);
            QVERIFY(event.isAccepted() && qAbs(view.drawing_scaling() - scale) < 1e-8 && view.repaints == 0);
            QTRY_COMPARE(view.repaints, 1);
        }
    }

    void cursors_follow_the_buttons()
    {
        const struct {
            bool press;
            Qt::MouseButton button;
            Qt::MouseButtons buttons;
            int shape;
        } rows[] = {{true, Qt::MiddleButton, Qt::MiddleButton, -1},
            {true, Qt::LeftButton, Qt::LeftButton, Qt::PointingHandCursor},
            {true, Qt::RightButton, both, Qt::SizeAllCursor},
            {false, Qt::RightButton, Qt::LeftButton, Qt::PointingHandCursor}, {false, Qt::LeftButton, Qt::NoButton, -1},
            {true, Qt::RightButton, Qt::RightButton, Qt::PointingHandCursor},
            // The release never came: the next press, or the end of the view, takes the cursor back.
            {true, Qt::RightButton, Qt::RightButton, Qt::PointingHandCursor},
            {false, Qt::RightButton, Qt::NoButton, -1}, {true, Qt::LeftButton, Qt::LeftButton, Qt::PointingHandCursor}};
        auto view = std::make_unique<View>();
        view->show_at(100, 100);
        QTest::mouseDClick(view.get(), Qt::LeftButton, {}, {5, 5});
        for (const auto& row : rows) {
            view->mouse(
                row.press ? QEvent::MouseButtonPress : QEvent::MouseButtonRelease, {5, 5}, row.button, row.buttons);
            QCOMPARE(cursor(), row.shape);
        }
        view.reset();
        QCOMPARE(cursor(), -1);
    }

    void picks()
    {
        View view;
        view.show_at(200, 200);
        QCOMPARE(pick(view, {100, 100}), 0UL);
        view.add(DraftEntity::Line, {-1, 0, 0.5, 1, 0, 0.5})->set_mark(5); // 1024, far
        view.add(DraftEntity::Line, {0, -1, -0.5, 0, 1, -0.5});            // 1025, near
        view.add(DraftEntity::Face, {0.5, 0.5, -0.9, 0.9, 0.5, 0.9, 0.9, 0.9, 0.9, 0.5, 0.9, -0.9})
            ->rendering(GLObject::SOLID);
        const std::pair<QPoint, unsigned long> rows[] = {{{60, 100}, 1024}, {{100, 100}, 1025}, {{101, 60}, 1025},
            {{104, 60}, 0}, {{170, 30}, 1026}, {{170, 170}, 0}};
        for (const auto& [pos, id] : rows) QCOMPARE(pick(view, pos), id);
        QVERIFY(view.get_drawing_object(0)->mark() == 4 && !view.get_drawing_object(0)->check_mark(5));
        view.get_drawing_object(1)->local_id(7); // an id that does not fit its place marks nothing
        QCOMPARE(pick(view, {100, 100}), ~0UL);

        // More hits than the buffer holds, each nearer than the one before: the 128th record is the last one seen.
        view.clear_drawing_objects();
        const unsigned long first = view.add(DraftEntity::Point, {})->local_id();
        for (int i = 1; i < 200; ++i) view.add(DraftEntity::Point, {0, 0, -0.001 * i});
        QCOMPARE(pick(view, {100, 100}), first + 127);
    }

    void what_is_picked_is_what_is_seen()
    {
        View view;
        view.show_at(300, 240);
        QRandomGenerator random(5);
        const auto vector = [&random](double size) {
            const auto one = [&] { return size * (2 * random.generateDouble() - 1); };
            return DRVect3d(one(), one(), one());
        };
        for (int i = 0; i < 60; ++i) {
            const DRVect3d center = vector(0.8), u = vector(0.3), v = vector(0.3);
            std::vector<double> face;
            for (const DRVect3d& p : {center - u - v, center + u - v, center + u + v, center - u + v})
                face.insert(face.end(), {p.x(), p.y(), p.z()});
            view.add(i % 5 != 0 ? DraftEntity::Face : DraftEntity::Line, face);
        }
        int hits = 0, unseen = 0;
        for (int round = 0; round < 12; ++round) {
            view.orientation(static_cast<QGLEditor::Orientation_Mode>(round % 6));
            if (round > 5) view.drawing_rotation(vector(180));
            view.drawing_scaling(round % 2 != 0 ? 0.6 : 1.1);
            view.drawing_translation(vector(0.2));
            for (unsigned long i = 0; i < 60; ++i)
                view.get_drawing_object(i)->rendering(round % 4 != 0 ? GLObject::SOLID : GLObject::WIREFRAME);
            for (int i = 0; i < 40; ++i) {
                const QPoint pos(random.bounded(5, 295), random.bounded(5, 235));
                const unsigned long id = pick(view, pos);
                const QImage picture = view.picture();
                bool magenta = false;
                for (int k = 0; k < 25; ++k) {
                    const QColor color = picture.pixelColor(pos + QPoint(k % 5 - 2, k / 5 - 2));
                    magenta |= color.red() > color.green();
                }
                QVERIFY(id != 0 || !magenta);
                hits += id != 0 ? 1 : 0;
                unseen += id != 0 && !magenta ? 1 : 0;
            }
        }
        // A face seen edge-on can be hit where it covers the centre of no pixel.
        QVERIFY(hits > 100 && 50 * unseen < hits);
    }

    void background_is_chosen()
    {
        View views[2];
        for (View& view : views) view.show_at(100, 100);
        QColor preset;
        QDialog::DialogCode answer = QDialog::Accepted;
        const BoxReader reader([&](QWidget* window) {
            auto* dialog = qobject_cast<QColorDialog*>(window);
            preset = dialog->currentColor();
            dialog->setCurrentColor(QColor(10, 20, 200));
            views[1].makeCurrent(); // as its repaint would
            static_cast<QDialog*>(dialog)->done(answer);
        });
        views[0].mouse(QEvent::MouseButtonDblClick, {5, 5}, Qt::RightButton, Qt::RightButton);
        answer = QDialog::Rejected;
        views[1].mouse(QEvent::MouseButtonDblClick, {5, 5}, Qt::RightButton, Qt::RightButton);
        QCOMPARE(preset, QColor(Qt::white));
        QCOMPARE(views[0].picture().pixelColor(50, 50), QColor(10, 20, 200));
        QCOMPARE(views[1].picture().pixelColor(50, 50), QColor(128, 128, 128));
    }
};

TOLMERA_TEST(TestNavigation)
#include "navigation.moc"
