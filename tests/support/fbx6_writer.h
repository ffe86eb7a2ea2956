// Says a document of version 7 in the words of version 6, so that a test can compare what becomes
// of the two: attributes, meshes and shapes go into their models, arrays become plain values, ids
// names, and curves takes. Templates are written out, since version 6 has none.
#pragma once

#include "tests/support/fbx_records.h"

// The top list of the document, to be written with a version from 6000 to 6999. What version 6
// can't say is left out: second attributes of a model, layers beyond the first, properties of nodes
// other than their transform that move. Models and materials must have names of their own.
FbxRecords AsVersion6(const FbxRecords& document);
