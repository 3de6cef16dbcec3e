#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/attempt.h"
#include "platform/messages.h"

namespace kolmera {

/// What the confirmation dialog of a run shows and answers.
struct Confirmation {
    std::string captionSuffix;           ///< blank and job text, behind the dialog's caption
    std::string runText;                 ///< the label
    std::string emptyTablesSuffix;       ///< blank and company, behind the check box's caption
    bool emptyTablesEnabled = false;     ///< the product table has rows
    std::vector<std::string> couplings;  ///< trade formats: rows of LevFastLista
    bool tradeFormat = false;            ///< PrisUtFa instead of PrisUtfö
};

struct ConfirmationAnswer {
    bool confirmed = false;  ///< SvarOK
    bool emptyTables = false;
};

/// What a run asks of its surroundings: the main window, the terminal, or a test's script.
class RunPort : public MessagePort, public PassedOver {
  public:
    virtual void status(std::string_view text) = 0;  ///< the text of Meddelande; a state, not a log
    virtual void runMode(bool on) = 0;               ///< Körläge: message line and Cancel shown or hidden
    /// Lets waiting events run, then tells whether Cancel was pressed.
    virtual bool cancelled() = 0;
    virtual void clearCancel() = 0;
    virtual ConfirmationAnswer confirm(const Confirmation& confirmation) = 0;
    virtual void openJobSettings() = 0;  ///< the user asked to mend the job
    /// Bytes of the price file read so far; for a progress bar.
    virtual void progress(std::uint64_t /*position*/, std::uint64_t /*size*/) {}
};

/// Values of a price file that were written as 0, because they are no numbers; an empty one is not counted.
struct NotNumbers {
    std::int64_t count = 0;
    std::int64_t firstRecord = 0;        ///< from 1
    std::string firstColumn, firstText;  ///< table and column, and what the file says there

    void note(std::string_view column, std::string_view text) {
        if (++count > 1) return;
        firstColumn = column;
        firstText = text;
    }
};

/// What a run did. Rows are counted when they are written.
struct RunSummary {
    std::int64_t records = 0;  ///< records (mask) or lines (trade formats) read
    std::int64_t newProducts = 0;
    std::int64_t changed = 0;  ///< existing products saved
    std::int64_t skipped = 0;  ///< records or lines that wrote nothing
    std::int64_t priceList = 0;
    std::int64_t alternatives = 0;
    std::int64_t documents = 0;
    NotNumbers notNumbers;
    bool cancelled = false;
    bool completed = false;  ///< the run reached its close-down (also when cancelled)
};

}  // namespace kolmera
