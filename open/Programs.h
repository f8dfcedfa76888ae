// Programs: finds the other programs of Tolmera.
#pragma once

#include <climits>
#include <string>

#include <unistd.h>

/// The path of a program in the folder of the running one, or if it is not there, its bare name, to be found in PATH.
inline std::string program(const std::string& name)
{
    char path[PATH_MAX];
    const ssize_t length = ::readlink("/proc/self/exe", path, sizeof path);
    std::string beside(path, length > 0 ? static_cast<std::size_t>(length) : 0);
    beside.erase(beside.rfind('/') + 1).append(name);
    return ::access(beside.c_str(), X_OK) == 0 ? beside : name;
}
