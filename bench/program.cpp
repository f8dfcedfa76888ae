// The start of a process, the wait for its first picture, and its end.

#include "program.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <thread>

#include <sys/wait.h>
#include <unistd.h>

namespace
{

/// The largest resident set that the process has had since its program was started, as the kernel tells it.
double peak_of(pid_t process)
{
    std::ifstream status("/proc/" + std::to_string(process) + "/status");
    double kibibytes = 0.0;
    for (std::string word; status >> word;)
        if (word == "VmHWM:")
            status >> kibibytes;
    return 1024.0 * kibibytes;
}

} // namespace

FirstPicture show_first_picture(std::vector<std::string> command, const std::string& first_swap)
{
    std::vector<char*> arguments;
    arguments.reserve(command.size() + 1);
    for (std::string& argument : command)
        arguments.push_back(argument.data());
    arguments.push_back(nullptr);

    int ends[2] = {};
    if (pipe(ends) != 0)
        std::abort();
    const auto start = std::chrono::steady_clock::now();
    const pid_t process = fork();
    if (process == 0) {
        dup2(ends[1], 3);
        setenv("LD_PRELOAD", first_swap.c_str(), 1);
        execvp(arguments[0], arguments.data());
        _exit(127);
    }
    close(ends[1]);
    char byte = 0;
    const bool shown = read(ends[0], &byte, 1) == 1;
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
    close(ends[0]);
    if (shown)
        std::this_thread::sleep_for(std::chrono::seconds(1));
    const double peak = peak_of(process);
    kill(process, SIGTERM);
    waitpid(process, nullptr, 0);
    if (!shown) {
        std::fprintf(stderr, "%s showed no picture\n", arguments[0]);
        std::exit(1);
    }
    return {seconds.count(), peak};
}
