#include "cli/terminalport.h"

#include <unistd.h>

#include <ostream>

#include "cli/session.h"
#include "platform/lettercase.h"

namespace kolmera::cli {

TerminalPort::TerminalPort(Session& session, std::ostream& errors, const std::atomic<bool>& cancel, bool emptyTables,
                           Doubtful doubtful, bool drawsProgress)
    : session_(session),
      errors_(errors),
      cancel_(cancel),
      emptyTables_(emptyTables),
      doubtful_(doubtful),
      bar_(drawsProgress ? STDERR_FILENO : -1) {}

Answer TerminalPort::show(const Message& message) {
    const bool titled = !message.title.empty() && !message.text.starts_with(message.title);
    print(titled ? message.title + ": " + message.text : message.text);
    const std::string words = session_.verbose ? session_.texts.originalWords().in(message.text) : std::string();
    if (!words.empty()) errors_ << '[' << words << ']' << std::endl;
    switch (message.buttons) {
        case Buttons::OK:
            return Answer::OK;
        case Buttons::OKCancel:
            return Answer::Cancel;
        case Buttons::YesNo:
            return Answer::No;
    }
    return Answer::Cancel;
}

void TerminalPort::status(std::string_view text) { status_ = text; }

void TerminalPort::runMode(bool on) {
    if (!on) bar_.clear();
}

ConfirmationAnswer TerminalPort::confirm(const Confirmation& confirmation) {
    if (!confirmation.warning.empty()) print(confirmation.warning);
    // An emptying that was interrupted may have left rows of the other tables.
    return {.confirmed = true, .emptyTables = emptyTables_};
}

bool TerminalPort::readsDoubtful(const DoubtfulFile& file) {
    print(file.text);
    const bool read = doubtful_ == Doubtful::All || (doubtful_ == Doubtful::Harmless && !file.garbage);
    if (!read) refusedFile_ = file;
    return read;
}

void TerminalPort::print(std::string_view text) {
    bar_.clear();
    errors_ << messages_.emplace_back(replaceAll(text, "\r\n", "\n")) << std::endl;
}

void TerminalPort::progress(std::uint64_t position, std::uint64_t size, std::int64_t /*records*/) {
    bar_.draw(position, size, status_);
}

}  // namespace kolmera::cli
