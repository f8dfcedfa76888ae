// Programs: where the other programs of Tolmera are.
#pragma once

#include <climits>
#include <string>

#include <unistd.h>

/// The path of another program of Tolmera beside the running one, or its bare name, which is then looked for in PATH.
inline std::string program(const std::string& name)
{
    char path[PATH_MAX];
    const ssize_t length = ::readlink("/proc/self/exe", path, sizeof path);
    std::string beside(path, length > 0 ? static_cast<std::size_t>(length) : 0);
    beside.erase(beside.rfind('/') + 1).append(name);
    return ::access(beside.c_str(), X_OK) == 0 ? beside : name;
}
