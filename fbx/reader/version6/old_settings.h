// The settings of a document of version 6 that stand outside its global settings.
#pragma once

class FbxGlobalSettings;
class FbxIO;

// Fills what `settings`, read before, are silent about: the ambient colour and the time mode. The
// current list is the document's; they are in its `Version5`.
void ReadOldSettings(FbxIO& io, FbxGlobalSettings& settings);
