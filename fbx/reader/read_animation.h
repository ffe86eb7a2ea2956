// Reads animation curves and the list of takes.
#pragma once

class FbxAnimCurve;
class FbxDocument;
class FbxIO;

// The current list is the curve's record.
void ReadCurve(FbxIO& io, FbxAnimCurve& curve);
// The current list is the document's; the takes are in its `Takes`.
void ReadTakes(FbxIO& io, FbxDocument& document);
