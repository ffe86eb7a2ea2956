// Videos, whose records may hold the media of textures.
#pragma once

class FbxDocument;
class FbxIO;
class FbxMediaFolder;
class FbxVideo;

// Reads a video's record, the current list, and writes the media embedded in it to the disk.
void ReadVideo(FbxIO& io, FbxVideo& video, const FbxMediaFolder& media);
// Gives textures without a file the one that their video has written. Textures are read before
// videos, so this comes after the connections; the next load of the file finds the same.
void FindEmbeddedTextures(const FbxDocument& document, const FbxMediaFolder& media);
