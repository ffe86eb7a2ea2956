// Prepares the target shapes of a scene once all is connected.
#pragma once

class FbxScene;

// Shapes apply their offsets to the geometry that they belong to when they are asked, see FbxShape.
// What must be there before is the normals that theirs are offsets from: a mesh without normals,
// one of whose shapes has some, gets smooth normals by corner.
void RebuildTargetShapes(FbxScene& scene);
