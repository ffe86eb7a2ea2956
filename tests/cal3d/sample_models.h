// Small objects of every kind for the tests of saver and loader, and their way to a file and back.
#pragma once

#include <string>
#include <string_view>

#include <boost/shared_ptr.hpp>

#include "cal3d/model/core_animation.h"
#include "cal3d/model/core_mesh.h"
#include "cal3d/model/core_skeleton.h"

// A root with two children, one of them a light and one without a name.
CalCoreSkeleton SampleSkeleton();
// A submesh with coordinates, colours, a vertex of two bones and a morph; one without coordinates
// whose vertex has no bone; and an empty one.
CalCoreMesh SampleMesh();
// Maps with and without names and types.
CalCoreMaterial SampleMaterial();
// Two tracks, one of them without keyframes.
CalCoreAnimation SampleAnimation();
CalCoreMorphAnimation SampleMorphAnimation();

// The bytes that the saver writes under a name with that ending.
std::string Saved(const CalCoreSkeleton& skeleton, std::string_view ending);
std::string Saved(const CalCoreMesh& mesh, std::string_view ending);
std::string Saved(const CalCoreMaterial& material, std::string_view ending);
std::string Saved(const CalCoreAnimation& animation, std::string_view ending);
std::string Saved(const CalCoreMorphAnimation& animation, std::string_view ending);

boost::shared_ptr<CalCoreSkeleton> LoadSkeleton(const std::string& bytes);
boost::shared_ptr<CalCoreMesh> LoadMesh(const std::string& bytes);
boost::shared_ptr<CalCoreMaterial> LoadMaterial(const std::string& bytes);
boost::shared_ptr<CalCoreAnimation> LoadAnimation(const std::string& bytes);
boost::shared_ptr<CalCoreMorphAnimation> LoadMorphAnimation(const std::string& bytes);

// What the loader says about a block that it refuses; "accepted" if it takes it.
std::string SkeletonError(const std::string& bytes);
std::string MeshError(const std::string& bytes);
std::string MaterialError(const std::string& bytes);
std::string AnimationError(const std::string& bytes);
std::string MorphAnimationError(const std::string& bytes);

// The text with the first `from` in it replaced; a test failure if there is none.
std::string Replaced(std::string text, std::string_view from, std::string_view to);
