#include "cal3d/io/input_file.h"

#include <cerrno>
#include <stdexcept>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

std::string ReadInputFile(const std::string& path) {
  struct Descriptor {
    ~Descriptor() {
      if (number >= 0) close(number);
    }
    int number;
  };
  // A directory opens too, and a pipe that nobody writes into would hang us.
  struct stat status {};
  const Descriptor file{stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode)
                            ? open(path.c_str(), O_RDONLY | O_CLOEXEC)
                            : -1};
  if (file.number < 0) throw std::runtime_error("[" + path + "] can't be opened");
  std::string bytes(static_cast<size_t>(status.st_size), '\0');
  size_t filled = 0;
  while (filled < bytes.size()) {
    const ssize_t count = read(file.number, bytes.data() + filled, bytes.size() - filled);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) throw std::runtime_error("[" + path + "] can't be read");
    filled += static_cast<size_t>(count);
  }
  return bytes;
}
