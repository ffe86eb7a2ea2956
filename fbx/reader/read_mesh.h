// Reads polygon meshes with their layers. The current list is the mesh's record.
#pragma once

class FbxIO;
class FbxMesh;

void ReadMesh(FbxIO& io, FbxMesh& mesh);
