// A loaded scene as text: its objects in their order, with what was read of each.
#pragma once

#include <string>

#include "fbx/scene/fbx_scene.h"

// An object's class and name; the properties that a file or a template has set, with type, flags
// and value; what is connected to it and to its properties; then what its class holds besides.
std::string SceneText(const FbxScene& scene);
// An object's class and name, and all its properties.
std::string PropertiesText(const FbxObject& object);
