// The thumbnailer: a drawing in, its picture out as PNG, for file managers. It keeps to bounds of its own in time and
// memory on any input, and writes the whole picture or nothing.

#include <QBuffer>
#include <QByteArray>

#include <algorithm>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>
#include <string_view>

#include <limits.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Drawing/DXFL_Processing.h"
#include "Drawing/OwnedEntities.h"
#include "Preview.h"

namespace
{

constexpr int largest_picture = 1024; // pixels a side, as the largest thumbnails of freedesktop.org
constexpr off_t largest_file = off_t{256} << 20;
constexpr unsigned int seconds = 8;

// Bytes of data, that is without code and files. What reading may not take is left for drawing, since OpenGL has no
// way to tell that memory ran out.
constexpr rlim_t most_memory = rlim_t{1280} << 20;
constexpr rlim_t memory_for_drawing = rlim_t{512} << 20;

constexpr const char* usage = "usage: tolmera-thumbnailer -s SIZE INPUT OUTPUT, SIZE from 1 to 1024 pixels";
constexpr const char* too_much_time = "the drawing is too large: it cannot be drawn within 8 seconds";
constexpr const char* too_much_memory = "the drawing is too large: it does not fit into 768 MiB of memory";
constexpr const char* too_much_text = "the file is too large: it holds more than 256 MiB";

/// The file that becomes the picture, for a signal handler to take away.
char unfinished_file[PATH_MAX];

/// Safe in a signal handler.
[[noreturn]] void fail(std::string_view problem)
{
    if (unfinished_file[0] != '\0')
        ::unlink(unfinished_file);
    for (const std::string_view text : {std::string_view("tolmera-thumbnailer: "), problem, std::string_view("\n")})
        if (::write(STDERR_FILENO, text.data(), text.size()) < 0)
            break;
    ::_exit(EXIT_FAILURE);
}

extern "C" void out_of_time(int /*signal*/)
{
    fail(too_much_time);
}

/// Bounds the memory, within what the process may have at most, so that `left_over` bytes of that remain.
void bound_memory(rlim_t left_over)
{
    rlimit bound = {};
    if (::getrlimit(RLIMIT_DATA, &bound) == 0) {
        bound.rlim_max = std::min(bound.rlim_max, most_memory);
        bound.rlim_cur = bound.rlim_max - std::min(bound.rlim_max, left_over);
        if (::setrlimit(RLIMIT_DATA, &bound) == 0)
            return;
    }
    fail("the memory cannot be bounded");
}

int picture_size(std::string_view text)
{
    int size = 0;
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), size);
    if (error != std::errc() || stop != text.data() + text.size() || size < 1 || size > largest_picture)
        fail(usage);
    return size;
}

QImage picture_of(const char* file, int size)
{
    struct stat facts = {};
    if (::stat(file, &facts) == 0 && S_ISREG(facts.st_mode) && facts.st_size > largest_file)
        fail(too_much_text);

    OwnedEntities drawing;
    bound_memory(memory_for_drawing);
    const DXFL_Processing reader(file, drawing.list);
    if (reader.get_file_status() != 0)
        fail("the file cannot be read");
    if (drawing.list.empty())
        fail("the file holds no points, lines or faces");

    bound_memory(0);
    if (!bring_into_view(drawing.list, reader))
        fail("the drawing has no finite extents");
    QImage picture = draw_preview(drawing.list, size);
    if (picture.isNull())
        fail("there is no OpenGL without a screen");
    return picture;
}

void write_picture(const QImage& picture, const std::string& file)
{
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    if (!picture.save(&buffer, "PNG"))
        fail("the picture cannot be encoded");

    const std::string beside = file + ".XXXXXX";
    if (beside.size() >= sizeof unfinished_file)
        fail("the name of the picture is too long");
    std::memcpy(unfinished_file, beside.c_str(), beside.size() + 1);
    const int descriptor = ::mkstemp(unfinished_file);
    if (descriptor < 0 || ::write(descriptor, png.constData(), static_cast<size_t>(png.size())) != png.size() ||
        ::close(descriptor) != 0)
        fail("the picture cannot be written");
    ::alarm(0); // who has the picture is not told of a failure
    if (::rename(unfinished_file, file.c_str()) != 0)
        fail("the picture cannot be written");
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 5 || std::string_view(argv[1]) != "-s")
        fail(usage);
    std::signal(SIGALRM, out_of_time);
    ::alarm(seconds);
    try {
        write_picture(picture_of(argv[3], picture_size(argv[2])), argv[4]);
    } catch (const std::bad_alloc&) {
        fail(too_much_memory);
    }
    return EXIT_SUCCESS;
}
