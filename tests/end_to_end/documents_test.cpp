// The examples in the documents, run as they stand: an indented "$ " begins a command for the
// shell, what follows it is what the command prints. VELTRUM_UPDATE=1 writes the documents anew.
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "tests/support/program_test.h"

namespace {

constexpr char kIndent[] = "    ";
// Where the documents say that the samples' folder is.
constexpr char kShownFolder[] = "/srv/veltrum";

class Documents : public ProgramTest {
 protected:
  Documents() {
    std::filesystem::copy(SamplesDirectory(), dir_.File("samples"),
                          std::filesystem::copy_options::recursive);
  }

  // The document with what its commands print now.
  std::string Rerun(const std::string& text) {
    std::filesystem::remove_all(dir_.File("out"));
    std::filesystem::create_directory(dir_.File("out"));
    std::istringstream lines(text);
    std::string made;
    std::string blanks;  // empty lines that may belong to an output
    bool inOutput = false;
    for (std::string line; std::getline(lines, line);) {
      const bool isIndented = line.starts_with(kIndent);
      if (line.empty()) {
        blanks += '\n';
        continue;
      }
      const bool isCommand = line.starts_with(std::string(kIndent) + "$ ");
      if (!inOutput || !isIndented || isCommand) made += blanks;
      blanks.clear();
      if (isCommand) {
        std::string command = line.substr(6);
        made += line + '\n';
        while (command.ends_with('\\') && std::getline(lines, line)) {
          command = command.substr(0, command.size() - 1) + line;
          made += line + '\n';
        }
        made += Indented(OutputOf(command));
      } else if (!inOutput || !isIndented) {
        made += line + '\n';
      }
      inOutput = isCommand || (inOutput && isIndented);
    }
    return made;
  }

 private:
  std::string OutputOf(const std::string& command) {
    const std::string folder = std::filesystem::path(ProgramPath("veltrum")).parent_path();
    const std::string script =
        "PATH='" + folder + "':$PATH LC_ALL=C; export PATH LC_ALL; umask 022; " + command;
    std::string out = RunProgram("/bin/bash", {"-c", script}, dir_.Path()).out;
    for (size_t at = 0; (at = out.find(dir_.Path(), at)) != std::string::npos;) {
      out.replace(at, dir_.Path().size(), kShownFolder);
    }
    return out;
  }

  // Without empty lines at its end, which can't be told from those of the document.
  static std::string Indented(const std::string& output) {
    std::istringstream lines(output.substr(0, output.find_last_not_of('\n') + 1));
    std::string text;
    for (std::string line; std::getline(lines, line);) {
      text += line.empty() ? "\n" : kIndent + line + '\n';
    }
    return text;
  }
};

TEST_F(Documents, ShowWhatIsPrinted) {
  std::vector<std::string> names{"docs/records.md"};
#ifndef __SANITIZE_ADDRESS__
  // Here the farm runs, and its limit of memory is below what the sanitizer maps.
  names.emplace_back("README.md");
#endif
  for (const std::string& name : names) {
    const std::string path = SamplesDirectory() + "/../" + name;
    const std::string shown = ReadFile(path);
    const std::string made = Rerun(shown);
    if (std::getenv("VELTRUM_UPDATE") != nullptr) {
      std::ofstream(path) << made;
      continue;
    }
    EXPECT_NE(made.find(kVersionLine), std::string::npos) << "no example ran";
    const auto at = std::mismatch(made.begin(), made.end(), shown.begin(), shown.end());
    EXPECT_TRUE(made == shown) << name << " should go on with: "
                               << std::string(at.first, made.end()).substr(0, 200);
  }
}

}  // namespace
