#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "import/run/runsummary.h"
#include "platform/messages.h"

namespace kolmera {

/// What the confirmation dialog of a run shows and answers.
struct Confirmation {
    std::string captionSuffix;           ///< blank and job text, behind the dialog's caption
    std::string runText;                 ///< the label
    std::string numbers;                 ///< how numbers are read
    std::string warning;                 ///< what the user has to know before; mostly empty
    std::string emptyTablesSuffix;       ///< blank and company, behind the check box's caption
    bool emptyTablesEnabled = false;     ///< the product table has rows
    std::vector<std::string> couplings;  ///< trade formats: rows of LevFastLista
    bool tradeFormat = false;            ///< PrisUtFa instead of PrisUtfö
};

struct ConfirmationAnswer {
    bool confirmed = false;  ///< SvarOK
    bool emptyTables = false;
};

/// A price file that is not what the run expects, in the user's words.
struct DoubtfulFile {
    std::string title, text;
    bool garbage = false;       ///< reading it would write what nobody meant
    bool otherNumbers = false;  ///< its numbers are written as in the other locale
};

/// Limits of the job that a run would break, in the user's words.
struct LimitsBroken {
    std::string title, text, question;
};

/// What a run asks of its surroundings: the main window, the terminal, or a test's script.
class RunPort : public MessagePort {
  public:
    virtual void status(std::string_view text) = 0;  ///< the text of Meddelande; a state, not a log
    virtual void runMode(bool on) = 0;               ///< Körläge: message line and Cancel shown or hidden
    /// Lets waiting events run, then tells whether Cancel was pressed.
    virtual bool cancelled() = 0;
    virtual void clearCancel() = 0;
    /// Whether Cancel ends the run while the preparation command runs; otherwise it ends the wait for the command.
    [[nodiscard]] virtual bool cancelEndsPreparation() const { return false; }
    virtual ConfirmationAnswer confirm(const Confirmation& confirmation) = 0;
    /// Whether such a file is read all the same. Nothing has been changed yet.
    virtual bool readsDoubtful(const DoubtfulFile& file) = 0;
    /// Whether the run goes on beyond the limits of its job. Nothing has been changed yet.
    virtual bool goesBeyondLimits(const LimitsBroken& broken) {
        Message message;
        message.text = broken.text + "\r\n\r\n" + broken.question;
        message.title = broken.title;
        message.buttons = Buttons::YesNo;
        message.secondIsDefault = true;
        return show(message) == Answer::Yes;
    }
    virtual void openJobSettings() = 0;  ///< the user asked to mend the job
    /// What the run found in its price file; told once, at the end, when not all of it was used as it stands. An
    /// information when records were left out, and that is all.
    virtual void tell(const Message& message) = 0;
    /// Of each kind of thing to tell, so many examples.
    [[nodiscard]] virtual std::size_t examplesTold() const { return 3; }
    /// How much of the price file is read, and how many records of it; for a progress bar. Less than 0 records: it is
    /// still being converted, and the measure is no bytes.
    virtual void progress(std::uint64_t /*position*/, std::uint64_t /*size*/, std::int64_t /*records*/) {}
};

}  // namespace kolmera
