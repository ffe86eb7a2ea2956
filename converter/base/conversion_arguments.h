// One parsed command: what to do, on what, with which files, names and options. A plain record that
// every exporter reads directly; loops that export one object after another work on copies of it.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "cal3d/io/file_format.h"

enum ModeType : int32_t {
  UNKNOWN_MODE = 0,
  EXPORTALL_MODE = 1,
  LIST_MODE = 2,
  EXPORT_MODE = 3,
  CAL3D_2_TEXT_MODE = 4,
  COMPARE_MODE = 5,
};

// A set of bits: test with `&`.
enum ObjectType : int32_t {
  UNKNOWN_OBJECT = 0,
  MESH_OBJECT = 1,
  NODE_OBJECT = 2,
  ANIM_OBJECT = 4,
  MORPHANIM_OBJECT = 8,
  TEXTURE_OBJECT = 16,
  ALL_OBJECT = 0xff,
  LIST_ALL_OBJECT = 0x100,  // never parsed; a listing takes it for every type
};

// A type of object that goes into files of its own, and what it is called.
struct ObjectKind {
  // Whether a command may say `text` for it.
  constexpr bool IsCalled(std::string_view text) const { return text == word || text == otherWord; }

  ObjectType type;
  std::string_view word;       // in commands and messages
  std::string_view otherWord;  // also in commands
  const char* name;            // in dumps of a command
  std::string_view label;      // of the record of an export
  const CalFileKind* file;
};

inline constexpr ObjectKind kMeshKind = {MESH_OBJECT, "mesh", "mesh", "MESH", "MESH", &kMeshFile};
inline constexpr ObjectKind kNodeKind = {NODE_OBJECT, "skel",     "node",
                                         "NODE",      "SKELETON", &kSkeletonFile};
inline constexpr ObjectKind kAnimKind = {ANIM_OBJECT, "anim",      "anim",
                                         "ANIM",      "ANIMATION", &kAnimationFile};
inline constexpr ObjectKind kMorphAnimKind = {MORPHANIM_OBJECT, "morphanim",  "morphanim",
                                              "MORPHANIM",      "MORPHANIMS", &kMorphAnimationFile};
inline constexpr ObjectKind kTextureKind = {TEXTURE_OBJECT, "texture",  "texture",
                                            "TEXTURE",      "MATERIAL", &kMaterialFile};
inline constexpr std::array kObjectKinds = {kMeshKind, kNodeKind, kAnimKind, kMorphAnimKind,
                                            kTextureKind};

// The texts of the two enumerations; "OUT OF RANGE" for a value without one.
struct ModeTypeAsString {
  static const char* getStringForEnumValue(ModeType mode);
};
struct ObjectTypeAsString {
  static const char* getStringForEnumValue(ObjectType type);
};

struct ConversionArguments {
  enum Option : int32_t { NORMAL = 0, HELP = 2 };

  float scaleFactor = 1.0F;
  int32_t commandVersion = 1;  // 1: exportObjectName selects; 2: exportObjectNames does
  int32_t verbosity = 0;
  std::string inputFilename;
  std::string outputFilename;
  std::string skeletonRootPath;
  std::vector<std::string> exportObjectNames;
  std::string exportObjectName;         // the object of the moment, set by loops in a copy
  std::string directoryForOutputFiles;  // ends in "/" unless empty
  int32_t option = NORMAL;
  ModeType mode = UNKNOWN_MODE;
  ObjectType type = UNKNOWN_OBJECT;
  float frameRate = 30.0F;  // frames a second
  bool normalizeWeight = false;
  bool useEvaluatedLocal = false;
  bool showLabels = true;
  bool encodeNames = false;
  bool groupMeshes = false;
  bool treatAsRoom = false;
  bool renameRoomNodes = false;
  std::string upAxis;            // "x", "-y" ...; empty means "z"
  std::string frontAxis;         // likewise; empty means "-y"
  std::string coordinateSystem;  // "left"; anything else is right-handed

  // A dump on one line of tab-led fields, ended by a newline.
  std::string toString() const;
};
