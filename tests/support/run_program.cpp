#include "tests/support/run_program.h"

#include <array>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// Both pipes are drained together: a program that fills one while we read the
// other would hang.
void Drain(int out_fd, std::string& out, int err_fd, std::string& err) {
  std::array<pollfd, 2> fds{{{out_fd, POLLIN, 0}, {err_fd, POLLIN, 0}}};
  const std::array<std::string*, 2> texts{&out, &err};
  std::array<char, 65536> buffer;
  int open_count = 2;
  while (open_count > 0 && poll(fds.data(), fds.size(), -1) > 0) {
    for (size_t i = 0; i < fds.size(); ++i) {
      if (fds[i].revents == 0) continue;
      const ssize_t n = read(fds[i].fd, buffer.data(), buffer.size());
      if (n > 0) {
        texts[i]->append(buffer.data(), static_cast<size_t>(n));
      } else {
        fds[i].fd = -1;
        --open_count;
      }
    }
  }
}

}  // namespace

RunResult RunVeltrum(const std::vector<std::string>& arguments, const std::string& directory) {
  return RunProgram("veltrum", arguments, directory);
}

RunResult RunProgram(const std::string& name, const std::vector<std::string>& arguments,
                     const std::string& directory) {
  RunResult result;
  std::array<int, 2> out_pipe{};
  std::array<int, 2> err_pipe{};
  if (pipe(out_pipe.data()) != 0 || pipe(err_pipe.data()) != 0) {
    ADD_FAILURE() << "no pipe";
    return result;
  }
  const pid_t child = fork();
  if (child == 0) {
    dup2(open("/dev/null", O_RDONLY), STDIN_FILENO);
    dup2(out_pipe[1], STDOUT_FILENO);
    dup2(err_pipe[1], STDERR_FILENO);
    for (int fd : {out_pipe[0], out_pipe[1], err_pipe[0], err_pipe[1]}) close(fd);
    std::string program = ProgramPath(name);
    std::vector<std::string> words = arguments;
    std::vector<char*> argv{program.data()};
    for (std::string& word : words) argv.push_back(word.data());
    argv.push_back(nullptr);
    if (chdir(directory.c_str()) == 0) execv(program.c_str(), argv.data());
    _exit(127);
  }
  close(out_pipe[1]);
  close(err_pipe[1]);
  Drain(out_pipe[0], result.out, err_pipe[0], result.err);
  close(out_pipe[0]);
  close(err_pipe[0]);
  int status = 0;
  waitpid(child, &status, 0);
  result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  return result;
}

std::string ProgramPath(const std::string& name) {
  return name.starts_with("/") ? name : VELTRUM_PROGRAMS "/" + name;
}

std::string SamplesDirectory() { return VELTRUM_SOURCE "/samples"; }

std::string TestsDirectory() { return VELTRUM_SOURCE "/tests"; }
