// The thumbnailer: a drawing in, its picture out as PNG, for file managers. A child process draws and this one waits
// for it, so that every input gets a picture or a reason within bounds of time and memory.

#include <QBuffer>
#include <QByteArray>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>
#include <string_view>

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "Drawing/DXFL_Processing.h"
#include "Drawing/OwnedEntities.h"
#include "Preview.h"

namespace
{

constexpr int largest_picture = 1024; // pixels a side, as the largest thumbnails of freedesktop.org
constexpr off_t largest_file = off_t{256} << 20;
constexpr rlim_t most_memory = rlim_t{1280} << 20; // bytes of data, that is without code and files
constexpr std::chrono::milliseconds time_to_draw{7500};

[[noreturn]] void fail(const std::string& problem)
{
    std::fprintf(stderr, "tolmera-thumbnailer: %s\n", problem.c_str());
    std::_Exit(EXIT_FAILURE);
}

int picture_size(std::string_view text)
{
    int size = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, size);
    return error == std::errc() && stop == end && size <= largest_picture ? size : 0;
}

void bound_memory()
{
#ifndef __SANITIZE_ADDRESS__ // which takes terabytes of addresses
    rlimit bound = {};
    ::getrlimit(RLIMIT_DATA, &bound);
    bound.rlim_cur = std::min(bound.rlim_cur, most_memory);
    ::setrlimit(RLIMIT_DATA, &bound); // succeeds, for it lowers a bound
#endif
}

QByteArray picture_of(const char* file, int size)
{
    struct stat facts = {};
    if (::stat(file, &facts) == 0 && S_ISREG(facts.st_mode) && facts.st_size > largest_file)
        fail("the file is too large: it holds more than 256 MiB");

    OwnedEntities drawing;
    const DXFL_Processing reader(file, drawing.list);
    if (reader.get_file_status() != 0)
        fail("the file cannot be read");
    if (drawing.list.empty())
        fail("the file holds no points, lines or faces");
    const auto extents = seen_extents(drawing.list);
    if (!extents)
        fail("the drawing has no finite extents");
    const QImage picture = draw_preview(drawing.list, *extents, size);
    if (picture.isNull())
        fail("nothing of the drawing can be seen");

    QBuffer png;
    if (!png.open(QIODevice::WriteOnly) || !picture.save(&png, "PNG"))
        fail("the picture cannot be encoded");
    return png.data();
}

/// The child's whole life: the picture goes into the pipe, or a reason to standard error.
[[noreturn]] void draw_into(int pipe, const char* file, int size)
{
    ::prctl(PR_SET_PDEATHSIG, SIGKILL); // where the parent ends, nobody wants the picture any more
    bound_memory();
    const QByteArray png = picture_of(file, size);
    const bool sent = ::write(pipe, png.constData(), static_cast<size_t>(png.size())) == png.size();
    std::_Exit(sent ? EXIT_SUCCESS : EXIT_FAILURE);
}

/// Appends what arrives from the pipe until the child closes it; false when that takes too long.
bool receive(int pipe, std::string& bytes)
{
    using namespace std::chrono;
    const auto deadline = steady_clock::now() + time_to_draw;
    while (steady_clock::now() < deadline) {
        const auto left = ceil<milliseconds>(deadline - steady_clock::now());
        pollfd waiting = {pipe, POLLIN, 0};
        if (::poll(&waiting, 1, static_cast<int>(left.count())) <= 0)
            continue;
        char buffer[65536];
        const ssize_t quantity = ::read(pipe, buffer, sizeof buffer);
        if (quantity == 0)
            return true;
        bytes.append(buffer, static_cast<size_t>(std::max<ssize_t>(quantity, 0)));
    }
    return false;
}

std::string picture_from_child(const char* file, int size)
{
    int ends[2];
    const pid_t child = ::pipe(ends) == 0 ? ::fork() : -1;
    if (child < 0)
        fail(std::string("no process can be started: ") + std::strerror(errno));
    if (child == 0)
        draw_into(ends[1], file, size);
    ::close(ends[1]);

    std::string png;
    if (!receive(ends[0], png))
        fail("the drawing is too large: it cannot be drawn within 8 seconds");
    int status = 0;
    ::waitpid(child, &status, 0);
    if (WIFSIGNALED(status))
        fail(std::string("drawing was ended by a signal: ") + ::strsignal(WTERMSIG(status)));
    if (status != 0) // the child has told the reason
        std::_Exit(EXIT_FAILURE);
    return png;
}

/// Puts the bytes into the regular file that is there, which somebody may have open, or into a new one. Space is
/// reserved first, so that a full disk leaves the file as it is. Returns what is wrong, or an empty text.
std::string write_picture(const std::string& png, const char* file, const char* drawing)
{
    struct stat facts = {};
    const bool exists = ::lstat(file, &facts) == 0;
    if (exists && !S_ISREG(facts.st_mode))
        return "it is not a regular file";
    struct stat source = {};
    if (exists && ::stat(drawing, &source) == 0 && source.st_dev == facts.st_dev && source.st_ino == facts.st_ino)
        return "it is the drawing";

    // O_RDWR: without the file system's help posix_fallocate reads the file.
    const int descriptor = ::open(file, O_RDWR | O_NOFOLLOW | O_CLOEXEC | (exists ? 0 : O_CREAT | O_EXCL), 0666);
    if (descriptor < 0)
        return std::strerror(errno);
    const auto size = static_cast<off_t>(png.size());
    int problem = ::posix_fallocate(descriptor, 0, size);
    const bool has_space = problem == 0;
    if (has_space && (::write(descriptor, png.data(), png.size()) != size || ::ftruncate(descriptor, size) != 0))
        problem = errno;
    if (problem == 0)
        return {};
    // Without space the file is as it was but for its length. After a failed write it is emptied.
    const bool undone = (exists ? ::ftruncate(descriptor, has_space ? 0 : facts.st_size) : ::unlink(file)) == 0;
    return std::strerror(problem) + std::string(undone ? "" : ", and it is not as it was");
}

} // namespace

int main(int argc, char** argv)
{
    const int size = argc == 5 && std::string_view(argv[1]) == "-s" ? picture_size(argv[2]) : 0;
    if (size < 1)
        fail("usage: tolmera-thumbnailer -s SIZE INPUT OUTPUT, SIZE from 1 to 1024 pixels");

    // write() then fails at the size limit or on a closed pipe, where a signal would end us. An ignored SIGCHLD would
    // hide how the child ended.
    std::signal(SIGXFSZ, SIG_IGN);
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGCHLD, SIG_DFL);
    try {
        const std::string problem = write_picture(picture_from_child(argv[3], size), argv[4], argv[3]);
        if (!problem.empty())
            fail("the picture cannot be written: " + problem);
    } catch (const std::bad_alloc&) {
        fail("the drawing is too large: it does not fit into memory");
    }
    return EXIT_SUCCESS;
}
