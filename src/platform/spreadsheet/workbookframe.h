#pragma once

#include <string>

#include "platform/spreadsheet/archive.h"
#include "platform/spreadsheet/package.h"

namespace kolmera {

/// Enters a new worksheet in the frame of a workbook: in the list of sheets, the workbook's relations and the list of
/// the parts' types. The sheet's own part is added by the caller.
class FrameChange {
  public:
    FrameChange(Archive& archive, const Package& package) : archive_(archive), package_(package) {}

    /// The part that the new sheet gets: beside the others, under a name that is free.
    [[nodiscard]] std::string freePart() const;
    /// `prefix` and the number of sheets, or the next number that makes the name unique, cut to 31 characters in front
    /// of the number.
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
