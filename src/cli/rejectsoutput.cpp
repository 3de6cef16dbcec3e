#include "cli/rejectsoutput.h"

#include <ostream>

#include "import/rejects/rejectfile.h"
#include "lang/keys/rejects.h"
#include "lang/keys/terminal.h"
#include "platform/error.h"

namespace kolmera::cli {

bool printRejects(Session& session, const RunFolder& runs, const std::string& run, const std::string& file,
                  const Surroundings& surroundings, std::string& told) {
    bool good = false;
    try {
        const RecordReader record(runs.file(run));
        const auto goesOn = [&] { return !surroundings.cancel.load(std::memory_order_relaxed); };
        const Rejects rejects = writeRejects(record, std::filesystem::absolute(file), goesOn);
        good = rejects.good();
        told = rejectsText(session.texts, rejects, record, file);
    } catch (const PlatformError& error) {
        told = session.text(text::rejects::kNotWritten, file) + ' ' + session.explain(error);
    }
    if (good) {
        surroundings.out << told << '\n';
    } else {
        surroundings.err << session.text(text::terminal::kError) << ' ' << told << '\n';
    }
    return good;
}

}  // namespace kolmera::cli
