#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

#include "cli/session.h"
#include "history/recordreader.h"

namespace kolmera::cli {

/// What the command line says of showing the record of a run or of a preview.
struct ChangeOutput {
    bool json = false;
    std::string file;  ///< where the changes are saved instead of printed: .xlsx, or text; empty: nowhere
};

/// On one line; what is no UTF-8 is replaced.
std::string dumped(const nlohmann::ordered_json& json);
/// A value of a company: a date as "2026-11-23", Null as null.
nlohmann::ordered_json jsonOf(const Value& value);
/// The head of a record.
nlohmann::ordered_json runJson(const RunHeader& run);

/// Prints a record: what it is about, warnings and other things to look at, figures, and every change; as text for
/// people or as JSON. With a file the changes go there. `previous` is the run before of the same job, as far as there
/// is one
/// (`previousRun`). kPassedOver where the company could not be asked for its products' names (kStopped where they
/// should be saved), kCancelled when it was cancelled, else kDone. Throws PlatformError.
int printChanges(Session& session, const RecordReader& record, const RunHeader* previous, const ChangeOutput& output,
                 const Surroundings& surroundings);

}  // namespace kolmera::cli
