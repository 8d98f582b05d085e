// A preloaded library that makes every file-system call on paths below ORLO_SLOW_PREFIX take
// ORLO_SLOW_DELAY_MS longer (20 by default), as a slow network share would. Paths elsewhere
// and calls on open descriptors pass at full speed; reading a slow folder's entries is
// delayed per entry read.
//
// With ORLO_SLOW_TRACE set, every delayed call made on the process's main thread (the GUI
// thread) prints the call, its path and a stack to standard error: that is how the calls that
// stall the GUI are found.

#include <dlfcn.h>
#include <dirent.h>
#include <execinfo.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cstdarg>
#include <cstdlib>
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <mutex>
#include <set>

namespace {

const char* prefix()
{
    static const char* value = std::getenv("ORLO_SLOW_PREFIX");
    return value;
}

long delayMs()
{
    static const long value = [] {
        const char* text = std::getenv("ORLO_SLOW_DELAY_MS");
        return text ? std::atol(text) : 20L;
    }();
    return value;
}

bool slow(const char* path)
{
    const char* p = prefix();
    return p && *p && path && std::strncmp(path, p, std::strlen(p)) == 0;
}

void slowDown()
{
    timespec wait{delayMs() / 1000, (delayMs() % 1000) * 1000000L};
    while (nanosleep(&wait, &wait) != 0) {
    }
}

bool tracing()
{
    static const bool value = std::getenv("ORLO_SLOW_TRACE") != nullptr;
    return value;
}

// Only the main thread's calls are traced: the others are allowed to wait.
void trace(const char* call, const char* path)
{
    if (!tracing() || syscall(SYS_gettid) != getpid())
        return;
    static thread_local bool inside = false;
    if (inside)
        return;
    inside = true;
    char line[512];
    const int length = std::snprintf(line, sizeof line, "slowfs GUI %s %s\n", call, path ? path : "(dir)");
    if (length > 0)
        (void)!write(2, line, std::min<size_t>(size_t(length), sizeof line - 1));
    // Object and offset per frame, for addr2line: the executable's own symbols are not exported.
    void* frames[40];
    const int depth = backtrace(frames, 40);
    for (int i = 2; i < depth; ++i) {
        Dl_info info{};
        if (dladdr(frames[i], &info) && info.dli_fname) {
            const int n = std::snprintf(line, sizeof line, "  %s +0x%lx %s\n", info.dli_fname,
                                        static_cast<unsigned long>(static_cast<char*>(frames[i]) - static_cast<char*>(info.dli_fbase)),
                                        info.dli_sname ? info.dli_sname : "");
            if (n > 0)
                (void)!write(2, line, std::min<size_t>(size_t(n), sizeof line - 1));
        }
    }
    (void)!write(2, "--\n", 3);
    inside = false;
}

void delayFor(const char* path, const char* call = "")
{
    if (slow(path)) {
        trace(call, path);
        slowDown();
    }
}

std::mutex& dirsMutex()
{
    static std::mutex mutex;
    return mutex;
}

std::set<DIR*>& slowDirs()
{
    static std::set<DIR*> dirs;
    return dirs;
}

template <typename F>
F next(const char* name)
{
    return reinterpret_cast<F>(dlsym(RTLD_NEXT, name));
}

mode_t modeOf(int flags, va_list args)
{
    return (flags & O_CREAT) || (flags & O_TMPFILE) == O_TMPFILE ? mode_t(va_arg(args, int)) : 0;
}

} // namespace

extern "C" {

int stat(const char* path, struct stat* buf)
{
    static auto real = next<int (*)(const char*, struct stat*)>("stat");
    delayFor(path, "stat");
    return real(path, buf);
}

int stat64(const char* path, struct stat64* buf)
{
    static auto real = next<int (*)(const char*, struct stat64*)>("stat64");
    delayFor(path, "stat64");
    return real(path, buf);
}

int lstat(const char* path, struct stat* buf)
{
    static auto real = next<int (*)(const char*, struct stat*)>("lstat");
    delayFor(path, "lstat");
    return real(path, buf);
}

int lstat64(const char* path, struct stat64* buf)
{
    static auto real = next<int (*)(const char*, struct stat64*)>("lstat64");
    delayFor(path, "lstat64");
    return real(path, buf);
}

int statx(int dirfd, const char* path, int flags, unsigned int mask, struct statx* buf)
{
    static auto real = next<int (*)(int, const char*, int, unsigned int, struct statx*)>("statx");
    delayFor(path, "statx");
    return real(dirfd, path, flags, mask, buf);
}

int access(const char* path, int mode)
{
    static auto real = next<int (*)(const char*, int)>("access");
    delayFor(path, "access");
    return real(path, mode);
}

int open(const char* path, int flags, ...)
{
    static auto real = next<int (*)(const char*, int, ...)>("open");
    va_list args;
    va_start(args, flags);
    const mode_t mode = modeOf(flags, args);
    va_end(args);
    delayFor(path, "open");
    return real(path, flags, mode);
}

int open64(const char* path, int flags, ...)
{
    static auto real = next<int (*)(const char*, int, ...)>("open64");
    va_list args;
    va_start(args, flags);
    const mode_t mode = modeOf(flags, args);
    va_end(args);
    delayFor(path, "open64");
    return real(path, flags, mode);
}

int openat(int dirfd, const char* path, int flags, ...)
{
    static auto real = next<int (*)(int, const char*, int, ...)>("openat");
    va_list args;
    va_start(args, flags);
    const mode_t mode = modeOf(flags, args);
    va_end(args);
    delayFor(path, "openat");
    return real(dirfd, path, flags, mode);
}

DIR* opendir(const char* path)
{
    static auto real = next<DIR* (*)(const char*)>("opendir");
    delayFor(path, "opendir");
    DIR* dir = real(path);
    if (dir && slow(path)) {
        const std::lock_guard<std::mutex> lock(dirsMutex());
        slowDirs().insert(dir);
    }
    return dir;
}

int closedir(DIR* dir)
{
    static auto real = next<int (*)(DIR*)>("closedir");
    {
        const std::lock_guard<std::mutex> lock(dirsMutex());
        slowDirs().erase(dir);
    }
    return real(dir);
}

struct dirent64* readdir64(DIR* dir)
{
    static auto real = next<struct dirent64* (*)(DIR*)>("readdir64");
    bool isSlow = false;
    {
        const std::lock_guard<std::mutex> lock(dirsMutex());
        isSlow = slowDirs().count(dir) > 0;
    }
    if (isSlow) {
        trace("readdir64", nullptr);
        slowDown();
    }
    return real(dir);
}

struct dirent* readdir(DIR* dir)
{
    static auto real = next<struct dirent* (*)(DIR*)>("readdir");
    bool isSlow = false;
    {
        const std::lock_guard<std::mutex> lock(dirsMutex());
        isSlow = slowDirs().count(dir) > 0;
    }
    if (isSlow) {
        trace("readdir", nullptr);
        slowDown();
    }
    return real(dir);
}

} // extern "C"
