// Reads a video's record, the current list, and writes the media embedded in it to the disk.
#pragma once

class FbxIO;
class FbxMediaFolder;
class FbxVideo;

void ReadVideo(FbxIO& io, FbxVideo& video, const FbxMediaFolder& media);
