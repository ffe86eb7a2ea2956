// A library to preload that makes one system call or allocation of a program fail, or all from one
// on, or one as if a signal came, or kills the program there, so that a test can walk through
// everything that can go wrong:
//
//   VELTRUM_FAULT="<call> <number> <how>"   write 3 once, alloc 700 on, rename 1 kill
//   VELTRUM_FAULT_CALLS=<file>              gets a line "<call> <count>" for each kind, at the end
//
// Calls count from 1, and from the start of `main`. The calls of a C library among themselves, such
// as the writes of a stdio stream, can't be reached.
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/types.h>
#include <sys/uio.h>
#include <unistd.h>

// The allocator of glibc by the names that can't be replaced.
extern "C" {
void* __libc_malloc(size_t size);                      // NOLINT(bugprone-reserved-identifier)
void* __libc_calloc(size_t count, size_t size);        // NOLINT(bugprone-reserved-identifier)
void* __libc_realloc(void* memory, size_t size);       // NOLINT(bugprone-reserved-identifier)
void* __libc_memalign(size_t alignment, size_t size);  // NOLINT(bugprone-reserved-identifier)
}

namespace {

enum Call { kAlloc, kOpen, kRead, kWrite, kClose, kRename, kMkdir, kCallCount };
constexpr const char* kNames[] = {"alloc", "open", "read", "write", "close", "rename", "mkdir"};

enum class How { kOnce, kOn, kKill, kSignal };

constexpr unsigned kMostSeconds = 60;  // a program that hangs then ends by SIGALRM

long _counts[kCallCount];
bool _isRunning = false;
Call _failing = kCallCount;
long _number = 0;
How _how = How::kOnce;

// Nothing here may allocate.
void ReadEnvironment() {
  const char* fault = std::getenv("VELTRUM_FAULT");
  char name[16] = "";
  char how[16] = "";
  if (fault == nullptr || std::sscanf(fault, "%15s %ld %15s", name, &_number, how) != 3) return;
  for (int call = 0; call < kCallCount; ++call) {
    if (std::strcmp(name, kNames[call]) == 0) _failing = static_cast<Call>(call);
  }
  if (std::strcmp(how, "on") == 0) _how = How::kOn;
  if (std::strcmp(how, "kill") == 0) _how = How::kKill;
  if (std::strcmp(how, "signal") == 0) _how = How::kSignal;
}

void WriteCounts() {
  const char* path = std::getenv("VELTRUM_FAULT_CALLS");
  if (path == nullptr) return;
  const long file =
      syscall(SYS_openat, AT_FDCWD, path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  for (int call = 0; call < kCallCount; ++call) {
    char line[64];
    const int length = std::snprintf(line, sizeof line, "%s %ld\n", kNames[call], _counts[call]);
    syscall(SYS_write, file, line, length);
  }
  syscall(SYS_close, file);
}

// True if this call is to fail; `errno` says why then.
bool Fails(Call call, int error) {
  if (!_isRunning) return false;
  const long count = ++_counts[call];
  if (call != _failing || count < _number || (count > _number && _how != How::kOn)) return false;
  if (_how == How::kKill) syscall(SYS_kill, syscall(SYS_getpid), SIGKILL);
  errno = _how == How::kSignal ? EINTR : error;
  return true;
}

template <typename Function>
Function* Next(const char* name, Function*) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

using Main = int(int, char**, char**);
Main* _main = nullptr;

int CountedMain(int argc, char** argv, char** environment) {
  ReadEnvironment();
  alarm(kMostSeconds);
  _isRunning = true;
  const int status = _main(argc, argv, environment);
  _isRunning = false;
  WriteCounts();
  return status;
}

mode_t ModeOf(int flags, va_list arguments) {
  return (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
}

int Open(int folder, const char* path, int flags, mode_t mode) {
  if (Fails(kOpen, EMFILE)) return -1;
  return static_cast<int>(syscall(SYS_openat, folder, path, flags, mode));
}

}  // namespace

extern "C" {

// NOLINTNEXTLINE(bugprone-reserved-identifier)
int __libc_start_main(Main* main, int argc, char** argv, void (*init)(), void (*fini)(),
                      void (*loaderFini)(), void* stackEnd) {
  _main = main;
  static decltype(&__libc_start_main) const kNext = Next("__libc_start_main", &__libc_start_main);
  return kNext(&CountedMain, argc, argv, init, fini, loaderFini, stackEnd);
}

void* malloc(size_t size) noexcept { return Fails(kAlloc, ENOMEM) ? nullptr : __libc_malloc(size); }
void* calloc(size_t count, size_t size) noexcept {
  return Fails(kAlloc, ENOMEM) ? nullptr : __libc_calloc(count, size);
}
void* realloc(void* memory, size_t size) noexcept {
  return Fails(kAlloc, ENOMEM) ? nullptr : __libc_realloc(memory, size);
}
void* memalign(size_t alignment, size_t size) noexcept {
  return Fails(kAlloc, ENOMEM) ? nullptr : __libc_memalign(alignment, size);
}
void* aligned_alloc(size_t alignment, size_t size) noexcept { return memalign(alignment, size); }

int open(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = ModeOf(flags, arguments);
  va_end(arguments);
  return Open(AT_FDCWD, path, flags, mode);
}
int open64(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = ModeOf(flags, arguments);
  va_end(arguments);
  return Open(AT_FDCWD, path, flags, mode);
}
int openat(int folder, const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = ModeOf(flags, arguments);
  va_end(arguments);
  return Open(folder, path, flags, mode);
}
FILE* fopen(const char* path, const char* mode) {
  static decltype(&fopen) const kNext = Next("fopen", &fopen);
  return Fails(kOpen, EMFILE) ? nullptr : kNext(path, mode);
}
FILE* fopen64(const char* path, const char* mode) {
  static decltype(&fopen64) const kNext = Next("fopen64", &fopen64);
  return Fails(kOpen, EMFILE) ? nullptr : kNext(path, mode);
}

ssize_t read(int file, void* bytes, size_t count) {
  return Fails(kRead, EIO) ? -1 : syscall(SYS_read, file, bytes, count);
}
ssize_t pread(int file, void* bytes, size_t count, off_t offset) {
  return Fails(kRead, EIO) ? -1 : syscall(SYS_pread64, file, bytes, count, offset);
}
ssize_t pread64(int file, void* bytes, size_t count, off64_t offset) {
  return Fails(kRead, EIO) ? -1 : syscall(SYS_pread64, file, bytes, count, offset);
}
size_t fread(void* bytes, size_t size, size_t count, FILE* stream) {
  static decltype(&fread) const kNext = Next("fread", &fread);
  if (!Fails(kRead, EIO)) return kNext(bytes, size, count, stream);
  stream->_flags |= _IO_ERR_SEEN;
  return 0;
}

// Half of a write still gets through, as on a disk that becomes full.
ssize_t write(int file, const void* bytes, size_t count) {
  if (!Fails(kWrite, ENOSPC)) return syscall(SYS_write, file, bytes, count);
  if (_how == How::kSignal) return -1;
  syscall(SYS_write, file, bytes, count / 2);
  errno = ENOSPC;
  return -1;
}
ssize_t writev(int file, const iovec* pieces, int count) {
  return Fails(kWrite, ENOSPC) ? -1 : syscall(SYS_writev, file, pieces, count);
}

// The descriptor is gone all the same.
int close(int file) {
  const bool fails = Fails(kClose, EIO);
  const long result = syscall(SYS_close, file);
  if (fails) errno = EIO;
  return fails ? -1 : static_cast<int>(result);
}
int fclose(FILE* stream) {
  static decltype(&fclose) const kNext = Next("fclose", &fclose);
  const bool fails = Fails(kClose, EIO);
  const int result = kNext(stream);
  return fails ? EOF : result;
}

int rename(const char* from, const char* to) noexcept {
  if (Fails(kRename, EACCES)) return -1;
  return static_cast<int>(syscall(SYS_renameat, AT_FDCWD, from, AT_FDCWD, to));
}
int renameat(int fromFolder, const char* from, int toFolder, const char* to) noexcept {
  if (Fails(kRename, EACCES)) return -1;
  return static_cast<int>(syscall(SYS_renameat, fromFolder, from, toFolder, to));
}

int mkdir(const char* path, mode_t mode) noexcept {
  return Fails(kMkdir, EACCES) ? -1 : static_cast<int>(syscall(SYS_mkdirat, AT_FDCWD, path, mode));
}
int mkdirat(int folder, const char* path, mode_t mode) noexcept {
  return Fails(kMkdir, EACCES) ? -1 : static_cast<int>(syscall(SYS_mkdirat, folder, path, mode));
}
}
