// The thumbnailer: draws the preview of a drawing as PNG, for file managers. Within limits of time and memory, every
// input results in a picture or an error message.

#include "Drawing/DXFL_Processing.h"
#include "Drawing/OwnedEntities.h"
#include "Judge.h"
#include "Preview.h"
#include "Programs.h"

#include <QBuffer>
#include <QByteArray>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <new>
#include <string>
#include <string_view>
#include <system_error>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

constexpr int largest_picture = 1024; // pixels a side, as in the thumbnail standard of freedesktop.org
constexpr off_t largest_file = off_t{256} << 20;
constexpr rlim_t most_memory = rlim_t{1280} << 20; // bytes of data, without code and mapped files
constexpr int milliseconds_to_explode = 5500;      // leaves time to draw the file unconverted if that takes longer
constexpr int milliseconds_to_draw = 7500;         // including exploding; 8 seconds including start-up and writing

[[noreturn]] void fail(const std::string& problem)
{
    std::fprintf(stderr, "tolmera-thumbnailer: %s\n", problem.c_str());
    std::_Exit(EXIT_FAILURE);
}

[[noreturn]] void fail_on_timeout(int /*signal*/)
{
    constexpr std::string_view text =
        "tolmera-thumbnailer: the drawing is too large: it cannot be drawn within 8 seconds\n";
    [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, text.data(), text.size());
    ::_exit(EXIT_FAILURE);
}

/// Has SIGALRM sent after this time; 0 cancels it.
void bound_time(int milliseconds)
{
    const itimerval time = {{}, {milliseconds / 1000, milliseconds % 1000 * 1000L}};
    ::setitimer(ITIMER_REAL, &time, nullptr);
}

void bound_memory()
{
#ifndef __SANITIZE_ADDRESS__ // which reserves terabytes of address space
    rlimit bound = {};
    ::getrlimit(RLIMIT_DATA, &bound);
    bound.rlim_cur = std::min(bound.rlim_cur, most_memory);
    ::setrlimit(RLIMIT_DATA, &bound); // cannot fail, because it does not raise a limit
#endif
}

int picture_size(std::string_view text)
{
    int size = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, size);
    return error == std::errc() && stop == end && size <= largest_picture ? size : 0;
}

/// Has tolmera-explode convert a file into memory. Returns the path of the result, or the file's own path if that fails
/// or takes too long.
std::string exploded(const char* file)
{
    const int memory = ::memfd_create("drawing", 0);
    const pid_t child = ::fork();
    if (child == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        std::signal(SIGALRM, SIG_DFL);
        bound_time(milliseconds_to_explode);
        const std::string explode = program("tolmera-explode");
        if (::dup2(memory, STDOUT_FILENO) >= 0)
            ::execlp(explode.c_str(), "tolmera-explode", "--", file, "-", nullptr);
        ::_exit(EXIT_FAILURE);
    }
    int status = EXIT_FAILURE;
    ::waitpid(child, &status, 0);
    return status == 0 ? "/proc/self/fd/" + std::to_string(memory) : file;
}

QByteArray picture_of(const char* file, int size)
{
    struct stat facts = {};
    if (::stat(file, &facts) == 0 && S_ISREG(facts.st_mode) && facts.st_size > largest_file)
        fail("the file is too large: it holds more than 256 MiB");

    OwnedEntities drawing;
    const DXFL_Processing reader(look_of(file) == Look::Wrong ? exploded(file) : file, drawing.list);
    if (reader.get_file_status() != 0)
        fail("the file cannot be read");
    if (drawing.list.empty())
        fail("the file holds no points, lines or faces");
    const QImage picture = draw_preview(drawing.list, size);
    if (picture.isNull())
        fail("no part of the drawing can be seen");

    QBuffer png;
    if (!png.open(QIODevice::WriteOnly) || !picture.save(&png, "PNG"))
        fail("the picture cannot be encoded");
    return png.data();
}

/// Writes into the existing regular file, which somebody may have open, or into a new one. If writing fails, empties an
/// existing file and removes a new one.
void write_picture(const QByteArray& png, const char* file, const char* drawing)
{
    const std::string failure = "the picture cannot be written: ";
    struct stat facts = {};
    const bool exists = ::lstat(file, &facts) == 0;
    if (exists && !S_ISREG(facts.st_mode))
        fail(failure + "the output is not a regular file");
    std::error_code error;
    if (exists && std::filesystem::equivalent(file, drawing, error))
        fail(failure + "the output is the drawing");

    const int descriptor = ::open(file, O_WRONLY | O_NOFOLLOW | O_CLOEXEC | (exists ? 0 : O_CREAT | O_EXCL), 0666);
    const ssize_t size = png.size();
    if (descriptor >= 0 && ::write(descriptor, png.constData(), static_cast<std::size_t>(size)) == size &&
        ::ftruncate(descriptor, size) == 0)
        return;
    const std::string reason = std::strerror(errno);
    if (descriptor >= 0)
        (void)!(exists ? ::ftruncate(descriptor, 0) : ::unlink(file));
    fail(failure + reason);
}

} // namespace

int main(int argc, char** argv)
{
    while (::open("/dev/null", O_RDWR) <= STDERR_FILENO) // no file gets the number of a closed standard stream
        ;
    const int size = argc == 5 && std::string_view(argv[1]) == "-s" ? picture_size(argv[2]) : 0;
    if (size < 1)
        fail("usage: tolmera-thumbnailer -s SIZE INPUT OUTPUT, SIZE from 1 to 1024 pixels");

    std::signal(SIGXFSZ, SIG_IGN); // so that write() fails at the file size limit
    std::signal(SIGCHLD, SIG_DFL); // if it were ignored, waitpid() would return no status
    std::signal(SIGALRM, fail_on_timeout);
    sigset_t alarm;
    ::sigemptyset(&alarm);
    ::sigaddset(&alarm, SIGALRM);
    ::sigprocmask(SIG_UNBLOCK, &alarm, nullptr);
    bound_time(milliseconds_to_draw);
    bound_memory();
    try {
        const QByteArray png = picture_of(argv[3], size);
        bound_time(0);
        write_picture(png, argv[4], argv[3]);
    } catch (const std::bad_alloc&) {
        fail("the drawing is too large: it does not fit into memory");
    }
    return EXIT_SUCCESS;
}
