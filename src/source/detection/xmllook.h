#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/bytestream.h"
#include "source/sourceformat.h"

namespace kolmera {

/// Which element of an XML file repeats, and what stands in it. `known` is the element where the user has said it.
/// False when nothing repeats. Throws kUnreadableXml for what cannot be read from its beginning.
bool findRecords(std::unique_ptr<ByteStream> stream, const std::optional<std::string>& known, SourceFormat& format);

}  // namespace kolmera
