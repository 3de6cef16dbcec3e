#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/engine/pagefile.h"
#include "platform/engine/storedvalue.h"

namespace kolmera {

/// The values of a record, texts pointing into it; nothing when its bytes are no record (blobs, which no column holds,
/// count as damage).
std::optional<std::vector<StoredValue>> parseRecord(std::string_view record);

/// A page of a table's tree that holds rows.
struct LeafPage {
    struct Row {
        std::int64_t id;
        std::string record;
    };
    std::vector<Row> rows;
    int damaged = 0;  ///< rows of which parts cannot be read
};

/// Reads the rows of a leaf page of a table, with their overflow pages; nothing for a page of another kind.
std::optional<LeafPage> readLeafPage(const PageFile& file, std::uint32_t page);

/// The pages below an inner page of a table's tree, as they are written; nothing for a page of another kind.
std::optional<std::vector<std::uint32_t>> readInnerPage(const PageFile& file, std::uint32_t page);

}  // namespace kolmera
