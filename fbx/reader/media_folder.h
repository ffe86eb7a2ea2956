// Files that belong to a scene file: textures beside it, found by their relative names, and the
// folder of the media that are embedded in it, which is the scene file's path with ".fbm" in place
// of its extension.
//
// A scene file is untrusted. Media are written as plain names inside that folder and nowhere else:
// of a stored name only the last component counts, and no symbolic link is followed.
#pragma once

#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

class FbxMediaFolder {
 public:
  // Of no scene file: nothing is found or written.
  FbxMediaFolder() = default;
  // `sceneFile` is an absolute path.
  explicit FbxMediaFolder(std::string sceneFile) : sceneFile_(std::move(sceneFile)) {}

  bool IsEnabled() const { return !sceneFile_.empty(); }

  // The file of that relative name beside the scene file, if there is one and none of the absolute
  // name; "" else. Both kinds of separators are understood.
  std::string Find(const std::string& absolute, const std::string& relative) const;

  struct Written {
    std::string absolute;
    std::string relative;  // to the scene file's folder
  };
  // Writes a file of the last component of `name`, replacing one that is there only when all of it
  // is written. `next` gives the bytes piece by piece, empty at the end. Both names are empty if
  // the name has no usable last component. A file that can't be written is told to the messages,
  // and from then on Find takes it for there, so that no name in the scene depends on the disk.
  Written Write(std::string_view name, const std::function<std::string_view()>& next);
  // "the embedded picture '<file>' can't be written: <reason>" for each.
  const std::vector<std::string>& GetMessages() const { return messages_; }

 private:
  bool IsThere(const std::string& path) const;

  std::string sceneFile_;
  std::set<std::string> unwritten_;
  std::vector<std::string> messages_;
};

// What stands behind the last '/' or '\'; "" for ".", ".." and names with a zero byte.
std::string_view PlainFileName(std::string_view path);
