// The two forms of the files, binary and XML, each with its writers and readers. CalSaver and
// CalLoader choose among them.
#pragma once

#include <string_view>

#include <boost/shared_ptr.hpp>

#include "cal3d/io/input_file.h"
#include "cal3d/io/output_file.h"
#include "cal3d/model/core_animation.h"
#include "cal3d/model/core_mesh.h"
#include "cal3d/model/core_skeleton.h"

// The writers take objects that have passed FaultOf.
void WriteBinary(OutputFile& file, const CalCoreSkeleton& skeleton);
void WriteBinary(OutputFile& file, const CalCoreMesh& mesh);
void WriteBinary(OutputFile& file, const CalCoreMaterial& material);
void WriteBinary(OutputFile& file, const CalCoreAnimation& animation);
void WriteBinary(OutputFile& file, const CalCoreMorphAnimation& animation);

void WriteText(OutputFile& file, const CalCoreSkeleton& skeleton);
void WriteText(OutputFile& file, const CalCoreMesh& mesh);
void WriteText(OutputFile& file, const CalCoreMaterial& material);
void WriteText(OutputFile& file, const CalCoreAnimation& animation);
void WriteText(OutputFile& file, const CalCoreMorphAnimation& animation);

// The readers throw std::runtime_error for what isn't a good file of its kind.
//
// Binary: the source stands behind the magic. Bytes behind the content are left.
boost::shared_ptr<CalCoreSkeleton> ReadBinarySkeleton(CalBufferSource& source);
boost::shared_ptr<CalCoreMesh> ReadBinaryMesh(CalBufferSource& source);
boost::shared_ptr<CalCoreMaterial> ReadBinaryMaterial(CalBufferSource& source);
boost::shared_ptr<CalCoreAnimation> ReadBinaryAnimation(CalBufferSource& source);
boost::shared_ptr<CalCoreMorphAnimation> ReadBinaryMorphAnimation(CalBufferSource& source);

// XML: elements and attributes that we don't know are passed over.
boost::shared_ptr<CalCoreSkeleton> ReadTextSkeleton(std::string_view text);
boost::shared_ptr<CalCoreMesh> ReadTextMesh(std::string_view text);
boost::shared_ptr<CalCoreMaterial> ReadTextMaterial(std::string_view text);
boost::shared_ptr<CalCoreAnimation> ReadTextAnimation(std::string_view text);
boost::shared_ptr<CalCoreMorphAnimation> ReadTextMorphAnimation(std::string_view text);
