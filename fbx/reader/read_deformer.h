// Reads skins, blend shapes and what belongs to them. The current list is the object's record.
#pragma once

class FbxBlendShape;
class FbxBlendShapeChannel;
class FbxCluster;
class FbxIO;
class FbxShape;
class FbxSkin;

void ReadSkin(FbxIO& io, FbxSkin& skin);
void ReadCluster(FbxIO& io, FbxCluster& cluster);
void ReadBlendShape(FbxIO& io, FbxBlendShape& blendShape);
void ReadBlendShapeChannel(FbxIO& io, FbxBlendShapeChannel& channel);
void ReadShape(FbxIO& io, FbxShape& shape);
