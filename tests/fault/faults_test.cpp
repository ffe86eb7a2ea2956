// Walks through what can go wrong on the machine: one system call or allocation after another
// fails, once or from there on, or is interrupted by a signal, or the program is killed there. A
// few of the calls are tried, or as many of each kind as VELTRUM_FAULTS says: 100000 means all.
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/run_program.h"
#include "tests/support/scene_builder.h"
#include "tests/support/temp_dir.h"

namespace {

namespace fs = std::filesystem;

using Words = std::vector<std::string>;
using Files = std::map<std::string, std::string>;  // from path below the folder to bytes

// What tells of a run is never the same.
constexpr const char* kLog = "run.log";
constexpr const char* kManifest = "first/s.json";
constexpr int kAbnormalEnd = 2;
constexpr int kMostFailures = 20;
constexpr int kSignals = 128;  // a status above it is a signal's number

struct Fault {
  std::string call;
  long number = 0;
  std::string how;  // "once", "on", "kill" or "signal"

  std::string Text() const { return call + " " + std::to_string(number) + " " + how; }
};

class Faults : public testing::Test {
 protected:
  // Runs `commands` with each fault, "first" in the place of DIR, then once more with "second".
  void Walk(const Words& commands) {
    Words arguments = {"-2"};
    for (const char* folder : {"first", "second"}) {
      for (std::string word : commands) {
        if (const size_t at = word.find("DIR"); at != word.npos) word.replace(at, 3, folder);
        arguments.push_back(word);
      }
      arguments.emplace_back("-");
    }
    arguments.pop_back();
    Walk("veltrum", arguments);
  }

  // What goes into the folder "first" is there before in an older form.
  void Walk(const std::string& program, const Words& arguments) {
    program_ = ProgramPath(program);
    fs::create_directory(dir_.File("first"));
    fs::create_directory(dir_.File("second"));

    const Files initial = ReadAll();
    const std::string counts = counts_.File("calls");
    reference_ = Run(arguments, "", counts);
    whole_ = ReadAll();
    const std::string printed = reference_.out.substr(reference_.out.find('\n') + 1);
    const std::string half = printed.substr(printed.size() / 2);
    if (printed == half + half) listing_ = half;
    before_ = initial;
    for (const auto& [name, bytes] : whole_) {
      if (name.starts_with("first/")) before_[name] = "An older " + name;
    }
    Restore();

    std::istringstream lines(ReadFile(counts));
    Fault fault;
    long count = 0;
    int failures = 0;
    while (lines >> fault.call >> count) {
      for (const long number : Numbers(count, fault.call == "alloc" ? 16 : 6)) {
        fault.number = number;
        for (const char* how : {"once", "on", "kill", "signal"}) {
          const bool isWaiting = fault.call == "read" || fault.call == "write";
          if (how == std::string_view("signal") && !isWaiting) continue;
          fault.how = how;
          const RunResult run = Run(arguments, fault.Text(), "");
          const std::string complaints = Judge(run, fault);
          Restore();
          EXPECT_EQ(complaints, "") << fault.Text() << '\n' << run.out << run.err;
          if (!complaints.empty() && ++failures > kMostFailures) return;
        }
      }
    }
  }

  std::string Sample(const std::string& name) const {
    return ReadFile(SamplesDirectory() + "/" + name);
  }

  TempDir dir_;

 private:
  // Either text may be empty.
  RunResult Run(const Words& arguments, const std::string& fault, const std::string& counts) const {
    Words words = {std::string("LD_PRELOAD=") + VELTRUM_INJECT_FAULTS, "VELTRUM_FAULT=" + fault,
                   "VELTRUM_FAULT_CALLS=" + counts, program_};
    words.insert(words.end(), arguments.begin(), arguments.end());
    return RunProgram("/usr/bin/env", words, dir_.Path());
  }

  // The first, the last and some between them.
  static std::vector<long> Numbers(long count, long most) {
    const char* const wish = std::getenv("VELTRUM_FAULTS");
    most = std::min(wish == nullptr ? most : std::atol(wish), count);
    std::vector<long> numbers;
    for (long i = 0; i < most; ++i) numbers.push_back(1 + i * (count - 1) / std::max(most - 1, 1L));
    return numbers;
  }

  Files ReadAll() const {
    Files files;
    for (const auto& entry : fs::recursive_directory_iterator(dir_.Path())) {
      const std::string name = fs::relative(entry.path(), dir_.Path()).string();
      if (entry.is_regular_file() && name != kLog && name != kManifest)
        files[name] = ReadFile(entry.path().string());
    }
    return files;
  }

  void Restore() const {
    for (const auto& entry : fs::directory_iterator(dir_.Path())) fs::remove_all(entry.path());
    fs::create_directory(dir_.File("first"));
    fs::create_directory(dir_.File("second"));
    for (const auto& [name, bytes] : before_) dir_.Write(name, bytes);
  }

  bool IsWhole(const Files& files, const std::string& folder) const {
    return std::all_of(whole_.begin(), whole_.end(), [&](const auto& file) {
      return !file.first.starts_with(folder) || Has(files, file.first, file.second);
    });
  }

  static bool Has(const Files& files, const std::string& name, const std::string& bytes) {
    const auto found = files.find(name);
    return found != files.end() && found->second == bytes;
  }

  // All that a run left wrong; empty if it kept the rules.
  std::string Judge(const RunResult& run, const Fault& fault) const {
    std::string complaints;
    const auto demand = [&](bool holds, const std::string& complaint) {
      if (!holds) complaints += complaint + '\n';
    };
    const Files after = ReadAll();
    const bool isKilled = fault.how == "kill";
    for (const auto& [name, bytes] : before_) {
      demand(after.contains(name), name + " is gone");
    }
    for (const auto& [name, bytes] : after) {
      const bool isTemporary = name.starts_with(".") || name.find("/.") != name.npos;
      demand(Has(before_, name, bytes) || Has(whole_, name, bytes) || (isKilled && isTemporary),
             name + " is no whole file");
    }
    if (isKilled) return complaints;
    if (fault.how == "signal") {
      demand(run.out == reference_.out && after == whole_, "a signal changed something");
    }

    demand(run.status < kSignals, "ended by a signal");
    for (const auto& [name, bytes] : whole_) {
      const bool hasRecord = run.out.find("FILENAME: " + name) != run.out.npos;
      demand(!hasRecord || Has(after, name, bytes), name + " has a record but isn't whole");
    }
    const bool isTold = run.status != reference_.status || !run.err.empty() ||
                        run.out.find("ERROR") != run.out.npos;
    demand(isTold || (run.out == reference_.out && after == whole_), "nothing tells of a loss");
    const bool endsEarly = fault.how == "on" || run.status == kAbnormalEnd;
    demand(endsEarly || IsWhole(after, "first/") || IsWhole(after, "second/"),
           "one fault harmed both commands");
    demand(endsEarly || run.out.find(listing_) != run.out.npos, "one fault harmed both listings");
    return complaints;
  }

  TempDir counts_;
  std::string program_;
  RunResult reference_;  // without a fault
  Files whole_;          // after it
  Files before_;         // before each run
  std::string listing_;  // what each run of the commands prints, if both print the same
};

TEST_F(Faults, Exports) {
  dir_.Write("s.fbx", Sample("avatar.fbx"));
  Walk({"--directory=DIR/", "--root=RootNode/Hips", "s.fbx", "export", "anim", "Wave", "-",
        "--directory=DIR/", "--root=RootNode/Hips", "s.fbx", "export", "morphanim", "Walk-blink",
        "-", "--directory=DIR/", "--root=RootNode/Hips", "s.fbx", "export"});
}

TEST_F(Faults, Rooms) {
  dir_.Write("s.fbx", Sample("room.fbx"));
  Walk({"--log", kLog, "--room", "--rename", "--directory=DIR/", "--root=RootNode/skeleton.room",
        "s.fbx", "export", "skel", "Room"});
}

// Loading unpacks the picture into "s.fbm/".
TEST_F(Faults, Pictures) {
  SceneBuilder scene;
  const int64_t skin = scene.Material(scene.Mesh("face").node, "skin");
  const int64_t texture = scene.Texture(skin, "DiffuseColor", "skin.png");
  const int64_t video =
      scene.AddObject("Video", "Video", "skin", "Clip", {},
                      {{"Filename", {"skin.png"}}, {"Content", {FbxRaw{std::string(5000, 'p')}}}});
  scene.Connect(video, texture);
  dir_.Write("s.fbx", scene.Write());
  Walk({"--directory=DIR/", "s.fbx", "export", "texture"});
}

TEST_F(Faults, Listings) {
  dir_.Write("s.fbx", Sample("avatar.fbx"));
  Walk({"s.fbx", "list", "-", "--root=RootNode/Hips", "s.fbx", "list", "skel"});
}

TEST_F(Faults, CommandFiles) {
  dir_.Write("s.fbx", Sample("room.fbx"));
  for (const std::string folder : {"first", "second"}) {
    dir_.Write(folder + ".txt", "--directory=" + folder +
                                    "/ --root=RootNode/skeleton.room s.fbx export skel Room\n");
  }
  Walk({"-z", "DIR.txt"});
}

TEST_F(Faults, Everything) {
  dir_.Write("s.fbx", Sample("avatar.fbx"));
  Walk("veltrum-all", {"s.fbx", "-o", "first"});
}

TEST_F(Faults, Cal3dToText) {
  dir_.Write("s.fbx", Sample("avatar.fbx"));
  RunVeltrum({"-2", "--root=RootNode/Hips", "s.fbx", "export", "skel", "In"}, dir_.Path());
  Walk({"--cal3d2text=DIR/Out.csf", "In.xsf", "skel"});
}

}  // namespace
