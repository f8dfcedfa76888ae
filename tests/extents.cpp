// The extents of a drawing, which are those of its sorted coordinates, to the sign of a zero.

#include "helper.h"

namespace
{

int allocations = 0;

} // namespace

void* operator new(std::size_t size)
{
    ++allocations;
    if (void* memory = std::malloc(size)) return memory;
    throw std::bad_alloc();
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t /*size*/) noexcept { std::free(memory); }

class TestExtents : public QObject
{
    Q_OBJECT

private slots:
    void are_those_of_sorted_coordinates()
    {
        const double values[] = {0.0, -0.0, 1.0, -1.0, 7.5, -7.5, 5e-324, 1e308, -1e308, HUGE_VAL, -HUGE_VAL};
        QRandomGenerator random(31);
        for (int round = 0; round < 2000; ++round) {
            std::list<DraftEntity*> entities;
            std::list<double> sorted[3], absolute;
            std::vector<double> expected, got;
            for (int i = random.bounded(4); i >= 0; --i) {
                entities.push_back(new DraftEntity(static_cast<DraftEntity::EntityType>(random.bounded(3))));
                for (unsigned int k = 0; k < 3 * entities.back()->points(); ++k) {
                    sorted[k % 3].push_back(values[random.bounded(round % 2 != 0 ? 11 : 4)]);
                    entities.back()->set_coordinate(
                        sorted[k % 3].back(), static_cast<DraftEntity::Coordinate>(k % 3), k / 3);
                }
            }
            DRVect3d min, max;
            double limit = 0.5;
            const DXFL_Processing reader("", entities);
            const int before = allocations;
            QVERIFY(reader.get_boundary(entities, min, max, limit) && allocations == before);
            for (std::list<double>& axis : sorted) {
                axis.sort();
                expected.insert(expected.end(), {axis.front(), axis.back()});
                absolute.insert(absolute.end(), {std::fabs(axis.front()), std::fabs(axis.back())});
            }
            absolute.sort();
            expected.push_back(absolute.back());
            got = {min.x(), max.x(), min.y(), max.y(), min.z(), max.z(), limit};
            QVERIFY(std::memcmp(got.data(), expected.data(), 7 * sizeof(double)) == 0);
            qDeleteAll(entities);
        }
    }

    void of_nothing_and_of_no_number()
    {
        std::list<DraftEntity*> entities;
        const DXFL_Processing reader("", entities);
        DRVect3d min(1, 2, 3), max;
        double limit = 4;
        QVERIFY(!reader.get_boundary(entities, min, max, limit) && min == DRVect3d(1, 2, 3) && limit == 4);
        const auto line = entity(DraftEntity::Line, {NAN, NAN, 0, NAN, -3, 0});
        entities.push_back(line.get());
        QVERIFY(reader.get_boundary(entities, min, max, limit) && std::isnan(min.x()) && std::isnan(max.x()));
        QVERIFY(min.y() == -3 && max.y() == -3 && limit == 3);
    }

    void normals_are_of_three_points()
    {
        QVERIFY(entity(DraftEntity::Face, {0, 0, 0, 2, 1, 0, 1, 3, 0, 5, 5, 5})->get_normal() == DRVect3d(0, 0, 1));
        QVERIFY(entity(DraftEntity::Face, {1, 2, 3, 2, 3, 4, 3, 4, 5, 9, 0, 0})->get_normal() == DRVect3d());
    }
};

QTEST_APPLESS_MAIN(TestExtents)
#include "extents.moc"
