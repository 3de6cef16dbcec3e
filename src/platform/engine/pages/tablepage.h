#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/engine/pages/pagefile.h"
#include "platform/engine/pages/storedvalue.h"

namespace kolmera {

/// A page of a table's tree that holds rows.
struct LeafPage {
    struct Row {
        std::int64_t id = 0;
        std::string record;     ///< as far as it can be read
        std::size_t local = 0;  ///< bytes of it that stand in the page itself
        std::size_t size = 0;   ///< bytes that it should have

        [[nodiscard]] bool cut() const { return record.size() < size; }
    };
    std::vector<Row> rows;
    std::size_t damaged = 0;  ///< cells that are no rows
    bool declared = false;    ///< the page says of itself that it is one
    bool accounted = false;   ///< its cells and what it calls free make up the page

    [[nodiscard]] bool sound() const { return declared && accounted && damaged == 0; }
};

/// The values of a row, texts pointing into its record.
struct RowValues {
    std::vector<StoredValue> values;
    bool shortened = false;  ///< the end of a text was lost with an overflow page
};

/// Takes a row apart; nothing when its bytes are no record (blobs, which no column holds, count as damage).
std::optional<RowValues> parseRow(const LeafPage::Row& row);

/// Reads a page as a leaf of a table, with the overflow pages of its rows, whatever kind of page it says it is.
LeafPage readLeafPage(const PageFile& file, std::uint32_t page);

/// Looks for rows in the bytes of a damaged page that none of its rows covers.
std::vector<LeafPage::Row> carveRows(const PageFile& file, std::uint32_t page,
                                     const std::function<bool(const LeafPage::Row&)>& accept);

/// A page below an inner page of a table's tree.
struct ChildPage {
    std::uint32_t page;
    std::int64_t lastId;  ///< no row below it has a greater ID
};

/// The pages below an inner page, as they are written; nothing for a page of another kind.
std::optional<std::vector<ChildPage>> readInnerPage(const PageFile& file, std::uint32_t page);

}  // namespace kolmera
