#pragma once

#include <string>
#include <vector>

#include "definitions/maskfile.h"
#include "source/conversion/targetlayout.h"

namespace kolmera {

/// A number of lines or bytes as it was typed into a mask; 0 for what is none.
int maskNumber(const std::string& typed);
/// How many columns a record of a tab mask has.
int tabColumns(const Mask& mask, const std::vector<Relation>& relations);

/// What the file has to be like that a mask reads, and what it reads from each column.
TargetLayout targetLayout(const WholeMask& mask);

}  // namespace kolmera
