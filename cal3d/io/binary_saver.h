// The binary form of the five kinds of file, little-endian. The objects have passed FaultOf.
#pragma once

#include "cal3d/io/output_file.h"
#include "cal3d/model/core_animation.h"
#include "cal3d/model/core_material.h"
#include "cal3d/model/core_mesh.h"
#include "cal3d/model/core_morph_animation.h"
#include "cal3d/model/core_skeleton.h"

void WriteBinary(OutputFile& file, const CalCoreSkeleton& skeleton);
void WriteBinary(OutputFile& file, const CalCoreMesh& mesh);
void WriteBinary(OutputFile& file, const CalCoreMaterial& material);
void WriteBinary(OutputFile& file, const CalCoreAnimation& animation);
void WriteBinary(OutputFile& file, const CalCoreMorphAnimation& animation);
