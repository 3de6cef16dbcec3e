#pragma once

#include <string>

#include "platform/spreadsheet/archive.h"
#include "platform/spreadsheet/package.h"

namespace kolmera {

/// The name of a sheet: `prefix`, cut so that no name has more than 31 characters, and a number.
std::string numberedSheetName(const std::string& prefix, std::size_t number);

/// Enters a new worksheet in the frame of a workbook: in the list of sheets, the workbook's relations and the list of
/// the parts' types. The sheet's own part is added by the caller.
class FrameChange {
  public:
    FrameChange(Archive& archive, const Package& package) : archive_(archive), package_(package) {}

    /// The part that the new sheet gets: beside the others, under a name that is free.
    [[nodiscard]] std::string freePart() const;
    /// The name with the number of sheets, or with the next number that makes it unique.
    [[nodiscard]] std::string freeName(const std::string& prefix) const;

    void enter(const std::string& part, const std::string& name);

  private:
    std::string addRelationship(const std::string& part);
    void addToSheets(const std::string& name, const std::string& relationship);
    void addType(const std::string& part);

    Archive& archive_;
    const Package& package_;
};

}  // namespace kolmera
