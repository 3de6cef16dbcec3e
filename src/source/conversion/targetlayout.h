#pragma once

#include <cstddef>
#include <vector>

#include "platform/encodings.h"

namespace kolmera {

/// What is read from a column.
enum class ColumnUse : unsigned char { Nothing, Text, Number, Date };

/// The file that a mask or a trade format reads.
struct TargetLayout {
    enum class Records {
        Lines,  ///< a line a column
        Tabs,   ///< a line a record, a tab between columns
        Fixed,  ///< pieces of a record of fixed length, one byte between records
        Whole,  ///< a line a record: the cells of the source one behind the other
    };
    struct Column {
        ColumnUse use = ColumnUse::Nothing;
        std::size_t first = 0, length = 0;  ///< Records::Fixed: bytes, from 0
    };

    Records records = Records::Whole;
    CodePage page = CodePage::Windows1252;
    std::vector<Column> columns;
    std::size_t lines = 1;         ///< of a record, Records::Lines
    std::size_t recordLength = 0;  ///< Records::Fixed: bytes
    std::size_t key = 0;           ///< the column that names the record, from 1; 0: none does
    char decimalSign = ',';        ///< of numbers of a workbook that are read as text
};

}  // namespace kolmera
