// Runs a command and prints, on standard error, the CPU seconds that it took and its peak memory in
// bytes: "<seconds> <bytes>". Its standard output is thrown away. The exit status is the command's.
#include <cstdio>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "usage: measure COMMAND [ARGUMENT...]\n");
    return 2;
  }
  const pid_t child = fork();
  if (child < 0) return 2;
  if (child == 0) {
    const int null = open("/dev/null", O_WRONLY);
    if (null >= 0) dup2(null, STDOUT_FILENO);
    execvp(argv[1], argv + 1);
    std::perror(argv[1]);
    _exit(127);
  }
  int status = 0;
  rusage usage{};
  if (wait4(child, &status, 0, &usage) != child) return 2;
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
  };
  std::fprintf(stderr, "%.3f %lld\n", seconds(usage.ru_utime) + seconds(usage.ru_stime),
               static_cast<long long>(usage.ru_maxrss) * 1024);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 2;
}
