#pragma once

#include <string>
#include <vector>

#include "platform/spreadsheet/archive.h"

namespace kolmera {

/// How one part of a workbook points to another.
struct Relationship {
    std::string id;
    std::string type;    ///< the last word of its type, which both forms of the format share: "worksheet"
    std::string target;  ///< the name of the part in the archive; empty for a target outside the file
};

/// The frame of an .xlsx workbook: which parts it has and what they are for. No part is known by its name.
struct Package {
    std::string workbook;  ///< the part that lists the sheets
    std::string workbookRelationships;
    std::vector<Relationship> relationships;  ///< of the workbook
    struct Sheet {
        std::string name;
        std::string part;
        bool isWorksheet;  ///< not a chart or a macro sheet
        bool isHidden;
    };
    std::vector<Sheet> sheets;  ///< in the workbook's order
    bool startsIn1904 = false;
    bool isLocked = false;  ///< no sheets may be added without a password
    bool isSigned = false;
    bool isStrict = false;  ///< the strict form of the format, with namespaces of its own

    /// Throws kUnreadableSpreadsheet when the archive is no workbook.
    static Package of(const Archive& archive);

    /// The first worksheet; throws kUnreadableSpreadsheet when there is none.
    [[nodiscard]] const Sheet& firstWorksheet() const;
    /// The worksheet of this name, without regard to letter case; the first one for an empty name. Throws kNoSuchSheet.
    [[nodiscard]] const Sheet& worksheet(const std::string& name) const;
    /// The part of a type ("styles") that the workbook points to; empty when there is none.
    [[nodiscard]] std::string partOfType(std::string_view type) const;
};

}  // namespace kolmera
