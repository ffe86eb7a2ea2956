// The page that shows a model: a template, built apart, that takes the .glb and what there is to
// say about it.
#pragma once

#include <string>

#include "gltf/view_model.h"

// The template's bytes, from where it lies beside the program: installed under share/veltrum, or
// built in the source tree. Throws std::runtime_error when it isn't there.
std::string ReadPageTemplate();

// The whole page. Throws std::runtime_error when the template lacks one of the places to fill.
std::string MakePage(const std::string& pageTemplate, const std::string& glb,
                     const ViewModel& model, const ViewNotes& notes, const std::string& generator);
