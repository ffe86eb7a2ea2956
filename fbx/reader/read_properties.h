// Reads the properties of an object from its `Properties70` list.
#pragma once

class FbxIO;
class FbxObject;

// The current list is the object's record. A property that the object doesn't have is created, if
// its parent is there, and flagged as imported; a record of an unknown type is passed over.
void ReadProperties(FbxIO& io, FbxObject& object);
