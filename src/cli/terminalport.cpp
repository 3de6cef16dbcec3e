#include "cli/terminalport.h"

#include <unistd.h>

#include <ostream>

#include "platform/lettercase.h"

namespace kolmera::cli {

TerminalPort::TerminalPort(std::ostream& errors, const std::atomic<bool>& cancel, bool emptyTables)
    : errors_(errors), cancel_(cancel), emptyTables_(emptyTables), bar_(STDERR_FILENO) {}

Answer TerminalPort::show(const Message& message) {
    bar_.clear();
    std::string told = replaceAll(message.text, "\r\n", "\n");
    if (!message.title.empty() && message.title != message.text) told.insert(0, message.title + ": ");
    errors_ << told << std::endl;
    messages_.push_back(std::move(told));
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
    return {.confirmed = true, .emptyTables = emptyTables_ && confirmation.emptyTablesEnabled};
}

void TerminalPort::progress(std::uint64_t position, std::uint64_t size) { bar_.draw(position, size, status_); }

}  // namespace kolmera::cli
