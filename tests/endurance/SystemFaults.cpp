#include "SystemFaults.h"

#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <stdexcept>

// The linker puts these in place of the system's (--wrap), for what is linked into this executable: the engine's calls.
// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp,readability-identifier-naming)
extern "C" {
ssize_t __real_pread(int descriptor, void* to, size_t count, off_t offset);
ssize_t __real_pwrite(int descriptor, const void* from, size_t count, off_t offset);
int __real_ftruncate(int descriptor, off_t length);
int __real_fdatasync(int descriptor);
int __real_unlink(const char* path);
}

namespace {

enum class Fault { None, Kill, Change, Read };
Fault fault = Fault::None;
int callsLeft = 0;

/// True at the call that the fault is for.
bool isDue(bool isRead)
{
    return fault != Fault::None && (fault == Fault::Read) == isRead && --callsLeft == 0;
}

/// Counts a change; true when it is to fail.
bool changeFails()
{
    if (!isDue(false))
        return false;
    if (fault == Fault::Kill)
        ::raise(SIGKILL);
    errno = EIO;
    return true;
}

} // namespace

extern "C" {
ssize_t __wrap_pread(int descriptor, void* to, size_t count, off_t offset)
{
    if (isDue(true)) {
        errno = EIO;
        return -1;
    }
    return __real_pread(descriptor, to, count, offset);
}

ssize_t __wrap_pwrite(int descriptor, const void* from, size_t count, off_t offset)
{
    if (fault == Fault::Kill && callsLeft == 1)
        static_cast<void>(__real_pwrite(descriptor, from, count / 2, offset));
    return changeFails() ? -1 : __real_pwrite(descriptor, from, count, offset);
}

int __wrap_ftruncate(int descriptor, off_t length)
{
    return changeFails() ? -1 : __real_ftruncate(descriptor, length);
}

int __wrap_fdatasync(int descriptor)
{
    return changeFails() ? -1 : __real_fdatasync(descriptor);
}

int __wrap_unlink(const char* path)
{
    return changeFails() ? -1 : __real_unlink(path);
}
}
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp,readability-identifier-naming)

namespace endurance {

void armSystemFault(const QString& text)
{
    if (text.isEmpty())
        return;
    const QString kind = text.section(u' ', 0, 0);
    callsLeft = text.section(u' ', 1).toInt();
    fault = kind == u"kill"     ? Fault::Kill
            : kind == u"change" ? Fault::Change
            : kind == u"read"   ? Fault::Read
                                : Fault::None;
    if (fault == Fault::None || callsLeft < 1)
        throw std::invalid_argument("no such fault");
}

bool systemFaultStruck()
{
    return fault != Fault::None && callsLeft <= 0;
}

} // namespace endurance
