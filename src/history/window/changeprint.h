#pragma once

#include <QString>
#include <functional>

#include "history/changereport.h"
#include "history/changetable.h"

class QPagedPaintDevice;

namespace kolmera {

/// Puts a report on paper, or into a PDF: title, figures, notices, and the list as it is shown, page by page.
class ChangePrint {
  public:
    ChangePrint(ChangeReport& report, const ChangeTable& table, LanguageTexts& texts)
        : report_(report), table_(table), texts_(texts) {}

    /// About how many pages the list takes.
    [[nodiscard]] int pages(QPagedPaintDevice& device) const;
    /// False when `keepOn` stopped it, or the device took no more.
    bool print(QPagedPaintDevice& device, const ChangeTable::KeepOn& keepOn) const;

  private:
    ChangeReport& report_;
    const ChangeTable& table_;
    LanguageTexts& texts_;
};

}  // namespace kolmera
