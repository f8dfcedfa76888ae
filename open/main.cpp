// Opens any drawing. If the viewer shows it correctly and accepts its name, this process becomes the viewer, without
// starting Qt. Otherwise a child process shows a converted copy or a link with another name, and this one waits to
// remove that, even if the child crashes.

#include "Judge.h"
#include "Opening.h"
#include "Programs.h"

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <string>

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

/// Replaces this process with the viewer. Returns only if that fails.
void become_viewer(const char* file)
{
    const std::string viewer = program("tolmera");
    ::execlp(viewer.c_str(), "tolmera", file, nullptr);
}

/// Makes a private folder. Returns an empty path if that fails.
std::string make_folder()
{
    const char* const place = std::getenv("TMPDIR");
    std::string folder = std::string(place != nullptr ? place : "/tmp") + "/tolmera-XXXXXX";
    return ::mkdtemp(folder.data()) != nullptr ? folder : "";
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 2)
        become_viewer(nullptr);
    std::string file = argc < 2 ? "" : argv[1];
    if (file[0] == '-')
        file.insert(0, "./"); // otherwise it would look like an option
    const Look look = look_of(file.c_str());
    if (look == Look::Correct && is_name_for_viewer(file))
        become_viewer(file.c_str());

    // Signals are blocked and received by sigwait(), so that none is missed, and none ends this process too early.
    sigset_t signals;
    ::sigemptyset(&signals);
    for (const int number : {SIGTERM, SIGINT, SIGHUP, SIGQUIT, SIGCHLD})
        ::sigaddset(&signals, number);
    ::sigprocmask(SIG_BLOCK, &signals, nullptr);
    std::signal(SIGCHLD, SIG_DFL); // if it were ignored, it would not be sent

    const std::string folder = make_folder();
    const pid_t child = ::fork();
    if (child == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        ::sigprocmask(SIG_UNBLOCK, &signals, nullptr);
        return show(argc, argv, file, folder, look);
    }
    int status = EXIT_FAILURE;
    while (::waitpid(child, &status, WNOHANG) == 0) {
        int number = 0;
        ::sigwait(&signals, &number);
        if (number != SIGCHLD)
            ::kill(child, number); // the child inherited which signals to ignore
    }
    std::error_code error;
    std::filesystem::remove_all(folder, error);
    return WIFEXITED(status) ? WEXITSTATUS(status) : EXIT_FAILURE;
}
