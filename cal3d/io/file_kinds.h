// The kinds of file that hold a model, and by what each is told.
#pragma once

#include <array>
#include <string_view>

struct CalFileKind {
  std::string_view name;             // in messages
  std::string_view extension;        // of the XML form
  std::string_view binaryExtension;  // a path that ends so, in any case, gets the binary form
  std::string_view root;             // the XML form's root element
  std::string_view magic;            // its MAGIC
  std::string_view binaryMagic;      // the first four bytes of the binary form
};

inline constexpr CalFileKind kSkeletonFile = {"skeleton", ".xsf", ".csf",
                                              "SKELETON", "XSF",  {"CSF\0", 4}};
inline constexpr CalFileKind kMeshFile = {"mesh", ".xmf", ".cmf", "MESH", "XMF", {"CMF\0", 4}};
inline constexpr CalFileKind kMaterialFile = {"material", ".xrf", ".crf",
                                              "MATERIAL", "XRF",  {"CRF\0", 4}};
inline constexpr CalFileKind kAnimationFile = {"animation", ".xaf", ".caf",
                                               "ANIMATION", "XAF",  {"CAF\0", 4}};
inline constexpr CalFileKind kMorphAnimationFile = {"morph animation", ".xpf", ".cpf",
                                                    "ANIMATION",       "XPF",  {"CPF\0", 4}};

inline constexpr std::array kFileKinds = {kSkeletonFile, kMeshFile, kMaterialFile, kAnimationFile,
                                          kMorphAnimationFile};
