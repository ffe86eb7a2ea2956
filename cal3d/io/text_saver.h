// The XML form of the five kinds of file. The objects have passed FaultOf.
#pragma once

#include "cal3d/io/output_file.h"
#include "cal3d/model/core_animation.h"
#include "cal3d/model/core_material.h"
#include "cal3d/model/core_mesh.h"
#include "cal3d/model/core_morph_animation.h"
#include "cal3d/model/core_skeleton.h"

void WriteText(OutputFile& file, const CalCoreSkeleton& skeleton);
void WriteText(OutputFile& file, const CalCoreMesh& mesh);
void WriteText(OutputFile& file, const CalCoreMaterial& material);
void WriteText(OutputFile& file, const CalCoreAnimation& animation);
void WriteText(OutputFile& file, const CalCoreMorphAnimation& animation);
