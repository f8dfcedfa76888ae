// libFuzzer target: the reader, checked against the plain rules.

#include "../plain_reader.h"

#include <cstdio>
#include <cstdlib>
#include <string>

#include <sys/mman.h>
#include <unistd.h>

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* bytes, std::size_t size)
{
    const int file = ::memfd_create("drawing", MFD_CLOEXEC);
    if (file < 0 || ::write(file, bytes, size) != static_cast<ssize_t>(size))
        std::abort();
    const std::string fault = plain::fault("/proc/self/fd/" + std::to_string(file), {bytes, bytes + size});
    ::close(file);
    if (!fault.empty() && std::puts(fault.c_str()) >= 0)
        std::abort();
    return 0;
}
